#include "signal_handler.h"

#include <errno.h>
#include <pthread.h>
#include <semaphore.h>
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

// The first handled signal, 0 until one arrives; later ones change nothing.
std::atomic<int> g_signal(0);

// Posted by the handler, awaited by the ending thread: sem_post is one of
// the few calls a handler may make.
sem_t g_wake;
std::atomic<bool> g_ending_thread_runs(false);

// Threads (the kernel's ids) that took a SIGSEGV.
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
// exit() waits on, the process is gone this long after the ending began.
const unsigned int kWatchdogSeconds = 5;

// Raw system call: uClibc has no gettid() wrapper.
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

// An ordinary thread, so the prints and exit() wait for whatever lock the
// interrupted thread holds (stdout, the heap) instead of taking it over.
void* end_process(void*)
{
    while (sem_wait(&g_wake) != 0) {
    }
    arm_watchdog();
    printf("handle signal -->0x%x\n", g_signal.load());
    thread_big_loop = false;
    thread_small_loop = false;
    thread_oled_ump = false;
    thread_led_loop = false;
    sleep_one_second();  // gives the loops a pass to notice their flag
    puts("exit  HandleSig");
    // Last, just before the process ends: work that takes a lock goes here,
    // on this ordinary thread, never in the handler.
    save_pending_settings();
    exit(-1);
}

}  // namespace

bool start_ending_thread()
{
    if (g_ending_thread_runs.load()) {
        return true;
    }
    pthread_t thread;
    if (sem_init(&g_wake, 0, 0) != 0 || pthread_create(&thread, nullptr, end_process, nullptr) != 0) {
        return false;
    }
    pthread_detach(thread);
    g_ending_thread_runs.store(true);
    return true;
}

bool process_is_ending()
{
    return g_signal.load() != 0;
}

void HandleSig(int sig)
{
    const int saved = errno;
    int none = 0;
    if (g_signal.compare_exchange_strong(none, sig)) {
        if (!g_ending_thread_runs.load()) {
            _exit(255);  // nothing to hand the ending to: at least it ends
        }
        sem_post(&g_wake);
    }
    errno = saved;
    // A thread that faulted comes straight back to its faulting
    // instruction: the second time, it waits for the end instead of
    // spinning on it. A SIGSEGV that was only sent returns the first time.
    if (sig == SIGSEGV && faulted_before(current_thread())) {
        for (;;) {
            pause();
        }
    }
}
