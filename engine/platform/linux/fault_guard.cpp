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
    sigjmp_buf jumpBuffer;
    GuardFrame* outer;
};

/// constinit: the signal handler reads it, so no dynamic initialiser may run.
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

/// Calls the handler that was installed before ours.
void callEarlierAction(int signal, siginfo_t* info, void* context) {
    const struct sigaction& earlier = earlierAction(signal);
    const bool isFault = info->si_code > 0;
    if ((earlier.sa_flags & SA_SIGINFO) != 0) {
        earlier.sa_sigaction(signal, info, context);
    } else if (earlier.sa_handler != SIG_DFL && earlier.sa_handler != SIG_IGN) {
        earlier.sa_handler(signal);
    } else if (isFault || earlier.sa_handler == SIG_DFL) {
        // The faulting instruction runs again and triggers the default action; a fault cannot be ignored. A
        // signal that was only sent has to be sent again.
        struct sigaction plain {};
        plain.sa_handler = SIG_DFL;
        ::sigaction(signal, &plain, nullptr);
        if (!isFault) {
            ::raise(signal);
        }
    }
}

/// The kernel sets si_code above 0 for a fault of this thread; sent signals have 0 or less. abort() sends its
/// signal to the calling thread, without holding a lock.
bool isRaisedByThisThread(int signal, const siginfo_t* info) {
    const bool isAbort = signal == SIGABRT && info->si_code == SI_TKILL && info->si_pid == ::getpid();
    return isAbort || info->si_code > 0;
}

void onGuardedSignal(int signal, siginfo_t* info, void* context) {
    if (innermostFrame != nullptr && isRaisedByThisThread(signal, info)) {
        ::siglongjmp(innermostFrame->jumpBuffer, 1);
    }
    callEarlierAction(signal, info, context);
}

bool installHandlers() {
    struct sigaction ours {};
    ours.sa_sigaction = onGuardedSignal;
    // The handler is left by a jump, so the signal must not stay blocked.
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    ::sigemptyset(&ours.sa_mask);
    for (std::size_t i = 0; i < guardedSignals.size(); ++i) {
        // Stored first: a signal of another thread may need the earlier action at once.
        ::sigaction(guardedSignals[i], nullptr, &earlierActions[i]);
        ::sigaction(guardedSignals[i], &ours, nullptr);
    }
    return true;
}

/// An alternate signal stack, for a stack overflow of the thread. One that the thread already has, for
/// instance a sanitizer's, is used instead.
class HandlerStack {
public:
    HandlerStack() {
        stack_t present{};
        if (::sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) {
            return;
        }
        void* const mapping = ::mmap(nullptr, byteCount, PROT_READ | PROT_WRITE,
                                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (mapping == MAP_FAILED) {
            return;
        }
        const stack_t handlerStack{.ss_sp = mapping, .ss_flags = 0, .ss_size = byteCount};
        ::sigaltstack(&handlerStack, nullptr);
        memory = mapping;
    }
    HandlerStack(const HandlerStack&) = delete;
    HandlerStack& operator=(const HandlerStack&) = delete;
    ~HandlerStack() {
        if (memory == nullptr) {
            return;
        }
        stack_t present{};
        if (::sigaltstack(nullptr, &present) == 0 && present.ss_sp == memory) {
            const stack_t disabled{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
            ::sigaltstack(&disabled, nullptr);
        }
        ::munmap(memory, byteCount);
    }

private:
    // For the largest register set of a processor, some 11 KiB, and the earlier handler's needs.
    static constexpr std::size_t byteCount = 64 * 1024;
    void* memory = nullptr;
};

/// A separate function: the one with the jump must have no objects to destroy.
void prepareThread() {
    [[maybe_unused]] static const bool installed = installHandlers();
    [[maybe_unused]] static thread_local const HandlerStack stack;
}

} // namespace

bool runGuarded(void (*body)(void* context), void* context) {
    prepareThread();
    GuardFrame frame{};
    frame.outer = innermostFrame;
    // The signal mask is not saved: that would cost a system call for each run.
    if (::sigsetjmp(frame.jumpBuffer, 0) != 0) {
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
