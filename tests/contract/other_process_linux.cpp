#include "line_reader.h"
#include "other_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

extern char** environ;

struct OtherProcess::State {
    pid_t process = 0;
    int output = -1;
    int input = -1; // open as long as we live
    std::unique_ptr<LineReader> reader;

    ~State() {
        reader.reset();
        close(output);
        close(input);
    }
};

OtherProcess::OtherProcess(const std::vector<std::string>& role) : state(std::make_unique<State>()) {
    int toIt[2] = {-1, -1};
    int fromIt[2] = {-1, -1};
    if (pipe2(toIt, O_CLOEXEC) != 0 || pipe2(fromIt, O_CLOEXEC) != 0)
        return;
    state->input = toIt[1];
    state->output = fromIt[0];
    std::vector<std::string> words{"/proc/self/exe", "--role"};
    words.insert(words.end(), role.begin(), role.end());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toIt[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromIt[1], STDOUT_FILENO);
    posix_spawn(&state->process, "/proc/self/exe", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(toIt[0]);
    close(fromIt[1]);
    state->reader = std::make_unique<LineReader>([pipe = state->output](char* bytes, std::size_t room) {
        const ssize_t count = read(pipe, bytes, room);
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    });
}

OtherProcess::~OtherProcess() {
    if (state->process > 0) {
        kill(state->process, SIGKILL);
        waitpid(state->process, nullptr, 0);
    }
}

std::vector<std::string> OtherProcess::lines() const {
    return state->reader ? state->reader->lines() : std::vector<std::string>();
}
