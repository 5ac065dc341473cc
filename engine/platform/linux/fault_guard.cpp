#include "platform/fault_guard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csetjmp>
#include <csignal>
#include <cstddef>

namespace rotika {

namespace {

struct GuardFrame {
    sigjmp_buf wayBack;
    GuardFrame* outer;
};

/// The handler reads it: no initialiser that would have to run.
constinit thread_local GuardFrame* innermostFrame = nullptr;

constexpr std::array guardedSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
std::array<struct sigaction, guardedSignals.size()> earlierActions;

const struct sigaction& earlierAction(int signal) {
    std::size_t index = 0;
    while (guardedSignals[index] != signal) {
        ++index;
    }
    return earlierActions[index];
}

/// As if this file's handler had never stood before the earlier one.
void passOn(int signal, siginfo_t* info, void* context) {
    const struct sigaction& earlier = earlierAction(signal);
    const bool isFault = info->si_code > 0;
    if ((earlier.sa_flags & SA_SIGINFO) != 0) {
        earlier.sa_sigaction(signal, info, context);
    } else if (earlier.sa_handler != SIG_DFL && earlier.sa_handler != SIG_IGN) {
        earlier.sa_handler(signal);
    } else if (isFault || earlier.sa_handler == SIG_DFL) {
        // The instruction that faulted runs again and meets the system's own action; nobody can ignore a
        // fault. A signal that was merely sent has to be sent again.
        struct sigaction plain {};
        plain.sa_handler = SIG_DFL;
        ::sigaction(signal, &plain, nullptr);
        if (!isFault) {
            ::raise(signal);
        }
    }
}

/// A code above 0 is the kernel's word for a fault of this very thread; sent signals have 0 or less. abort()
/// sends its signal to the calling thread, and holds no lock of its own meanwhile.
bool isMadeHere(int signal, const siginfo_t* info) {
    const bool isAbort = signal == SIGABRT && info->si_code == SI_TKILL && info->si_pid == ::getpid();
    return isAbort || info->si_code > 0;
}

void onGuardedSignal(int signal, siginfo_t* info, void* context) {
    if (innermostFrame != nullptr && isMadeHere(signal, info)) {
        ::siglongjmp(innermostFrame->wayBack, 1);
    }
    passOn(signal, info, context);
}

bool installHandlers() {
    struct sigaction ours {};
    ours.sa_sigaction = onGuardedSignal;
    // The handler is left by a jump, so the signal must not stay blocked.
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    ::sigemptyset(&ours.sa_mask);
    for (std::size_t i = 0; i < guardedSignals.size(); ++i) {
        // Another thread's signal may need the earlier action at once.
        ::sigaction(guardedSignals[i], nullptr, &earlierActions[i]);
        ::sigaction(guardedSignals[i], &ours, nullptr);
    }
    return true;
}

/// A stack for the handler, for when the thread's own is used up. One that the thread has already, a
/// sanitizer's for instance, does as well.
class HandlerStack {
public:
    HandlerStack() {
        stack_t present{};
        if (::sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) {
            return;
        }
        void* const room = ::mmap(nullptr, byteCount, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (room == MAP_FAILED) {
            return;
        }
        const stack_t fresh{.ss_sp = room, .ss_flags = 0, .ss_size = byteCount};
        ::sigaltstack(&fresh, nullptr);
        memory = room;
    }
    HandlerStack(const HandlerStack&) = delete;
    HandlerStack& operator=(const HandlerStack&) = delete;
    ~HandlerStack() {
        if (memory == nullptr) {
            return;
        }
        stack_t present{};
        if (::sigaltstack(nullptr, &present) == 0 && present.ss_sp == memory) {
            const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
            ::sigaltstack(&none, nullptr);
        }
        ::munmap(memory, byteCount);
    }

private:
    // Room for a processor's largest set of registers, some 11 KiB, and for whoever had the signal before.
    static constexpr std::size_t byteCount = 64 * 1024;
    void* memory = nullptr;
};

/// Kept apart so that nothing in the function with the jump stands to be destroyed.
void prepareThread() {
    [[maybe_unused]] static const bool installed = installHandlers();
    [[maybe_unused]] static thread_local const HandlerStack stack;
}

} // namespace

bool runGuarded(void (*body)(void* context), void* context) {
    prepareThread();
    GuardFrame frame{};
    frame.outer = innermostFrame;
    // The signal mask is not saved: that would be a call into the kernel for each run.
    if (::sigsetjmp(frame.wayBack, 0) != 0) {
        innermostFrame = frame.outer;
        return false;
    }
    innermostFrame = &frame;
    bool isDone = true;
    try {
        body(context);
    } catch (...) {
        isDone = false;
    }
    innermostFrame = frame.outer;
    return isDone;
}

} // namespace rotika
