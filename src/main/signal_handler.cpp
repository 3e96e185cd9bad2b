#include "signal_handler.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "runtime_settings.h"
#include "settings_saver.h"

namespace {

// Thread ids (the kernel's): the one that takes the stop signals, and the
// one running HandleSig, 0 until a signal is handled.
std::atomic<int> g_stop_thread(0);
std::atomic<int> g_handling_thread(0);

// Threads that took a SIGSEGV after the process began to end.
const int kMaxFaultedThreads = 8;
std::atomic<int> g_faulted[kMaxFaultedThreads];

// True when this thread took one before (or the table is full).
bool faulted_before(int self)
{
    for (int i = 0; i < kMaxFaultedThreads; ++i) {
        int slot = g_faulted[i].load();
        if (slot == 0 && g_faulted[i].compare_exchange_strong(slot, self)) {
            return false;
        }
        if (slot == self) {
            return true;
        }
    }
    return true;
}

// On the box a hung daemon is never restarted, a dead one is: whatever
// exit() waits on, the process is gone this long after HandleSig began.
const unsigned int kWatchdogSeconds = 5;

// Raw system calls: uClibc has no gettid() or tgkill() wrappers.
int current_thread()
{
    return static_cast<int>(syscall(SYS_gettid));
}

void end_now(int)
{
    _exit(255);
}

// An alarm, not a thread: its handler needs no lock, no allocation and no
// other thread's help, so it fires even when exit() is stuck.
void arm_watchdog()
{
    struct sigaction action;
    memset(&action, 0, sizeof(action));
    action.sa_handler = end_now;
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);
    alarm(kWatchdogSeconds);
}

// The full second even when a second signal cuts the sleep short.
void sleep_one_second()
{
    timespec left = {1, 0};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

}  // namespace

void take_stop_signals_here()
{
    g_stop_thread.store(current_thread());
}

void HandleSig(int sig)
{
    const int self = current_thread();
    const int stop_thread = g_stop_thread.load();
    if (sig != SIGSEGV && stop_thread != 0 && self != stop_thread) {
        // A stop signal aimed at a worker (by thread id, or the second of
        // two while the main thread has one pending) is handed on: ending
        // the process here could leave a lock held that exit() needs.
        const int saved = errno;
        syscall(SYS_tgkill, getpid(), stop_thread, sig);
        errno = saved;
        return;
    }
    int none = 0;
    if (!g_handling_thread.compare_exchange_strong(none, self)) {
        // Already ending: changes nothing. A thread that returns is no
        // longer stopped with whatever lock it holds (stdout, the heap)
        // that exit() may need; but a real fault comes straight back, and
        // that thread waits for the end instead of spinning on its
        // faulting instruction (at real-time priority it would starve the
        // rest).
        if (sig != SIGSEGV || !faulted_before(self)) {
            return;
        }
        for (;;) {
            pause();
        }
    }
    arm_watchdog();
    printf("handle signal -->0x%x\n", sig);
    thread_big_loop = false;
    thread_small_loop = false;
    thread_oled_ump = false;
    thread_led_loop = false;
    sleep_one_second();  // gives the loops a pass to notice their flag
    puts("exit  HandleSig");
    save_pending_settings();
    exit(-1);
}
