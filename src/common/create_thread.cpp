#include "create_thread.h"

#include <errno.h>
#include <sched.h>

namespace {

int start_thread(pthread_t* tid, void* (*fn)(void*), int priority, int policy, int detached,
                 void* arg, bool realtime)
{
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    if (realtime) {
        pthread_attr_setschedpolicy(&attr, policy);
        sched_param param = {};
        param.sched_priority = priority;
        pthread_attr_setschedparam(&attr, &param);
    }
    if (detached != 0) {
        pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    }
    int rc = pthread_create(tid, &attr, fn, arg);
    pthread_attr_destroy(&attr);
    return rc;
}

}  // namespace

pthread_t CreateThread(void* (*fn)(void*), int priority, int policy, int detached, void* arg)
{
    // Zero until pthread_create stores an identifier: a refused creation
    // (reported as a positive code) then reads as 0, "not started".
    pthread_t tid = 0;
    int rc = start_thread(&tid, fn, priority, policy, detached, arg, true);
    if (rc == EPERM) {
        // Without the privilege for a real-time policy (an ordinary user
        // running the simulator) the loop still has to run: fall back to
        // the default policy rather than lose the thread.
        tid = 0;
        rc = start_thread(&tid, fn, priority, policy, detached, arg, false);
    }
    if (rc < 0) {
        return 0;
    }
    return tid;
}
