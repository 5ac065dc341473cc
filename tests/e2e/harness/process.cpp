#include "harness/process.h"

#include "harness/waiting.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <utility>

namespace e2e {

namespace {

constexpr std::chrono::milliseconds politeLimit{5'000};
constexpr int displayFd = 3;

void redirectOutput(const std::filesystem::path& file) {
    const char* path = file.empty() ? "/dev/null" : file.c_str();
    const int output = open(path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int input = open("/dev/null", O_RDONLY);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
}

/// In the child: everything but the three standard descriptors and the wanted one is closed at exec.
void passDescriptor(int descriptor) {
    if (descriptor == displayFd)
        fcntl(descriptor, F_SETFD, 0);
    else if (descriptor >= 0)
        dup2(descriptor, displayFd);
}

[[noreturn]] void becomeChild(const Command& command, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127);
    redirectOutput(command.outputFile);
    passDescriptor(command.inheritedFd);
    for (const auto& [name, value] : command.environment) {
        if (value.empty())
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    if (!command.folder.empty() && chdir(command.folder.c_str()) != 0)
        _exit(127);
    std::vector<char*> arguments;
    for (const std::string& word : command.words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

} // namespace

Process::Process(const Command& command) {
    const pid_t parent = getpid();
    child = fork();
    if (child < 0)
        throw ScenarioError("could not start " + command.words.front());
    if (child == 0)
        becomeChild(command, parent);
}

Process::Process(Process&& other) noexcept
    : child(std::exchange(other.child, 0)), status(std::exchange(other.status, std::nullopt)) {}

Process& Process::operator=(Process&& other) noexcept {
    if (this != &other) {
        end();
        child = std::exchange(other.child, 0);
        status = std::exchange(other.status, std::nullopt);
    }
    return *this;
}

Process::~Process() {
    end();
}

bool Process::reap() {
    if (child == 0 || status)
        return true;
    int raw = 0;
    if (waitpid(child, &raw, WNOHANG) == child)
        status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return status.has_value();
}

bool Process::isRunning() {
    return !reap();
}

void Process::send(int signal) const {
    if (child != 0 && !status)
        kill(child, signal);
}

std::optional<int> Process::statusWithin(std::chrono::milliseconds limit) {
    holdsWithin(limit, [this] { return reap(); });
    return status;
}

void Process::end() {
    if (reap())
        return;
    send(SIGTERM);
    if (statusWithin(politeLimit))
        return;
    send(SIGKILL);
    statusWithin(generousLimit);
}

int runToEnd(const Command& command) {
    Process process(command);
    const std::optional<int> status = process.statusWithin(generousLimit * 2);
    if (!status)
        throw ScenarioError(command.words.front() + " did not end");
    return *status;
}

} // namespace e2e
