#include "create_thread.h"

pthread_t CreateThread(void* (*fn)(void*), int priority, int policy, int detached, void* arg)
{
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    // Policy and priority go into the attributes, but the inherit-scheduler
    // attribute stays at its default: the thread takes its creator's
    // policy, normal unless the daemon was started real-time.
    pthread_attr_setschedpolicy(&attr, policy);
    sched_param param = {};
    param.sched_priority = priority;
    pthread_attr_setschedparam(&attr, &param);
    if (detached != 0) {
        pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    }
    // Zero until pthread_create stores an identifier: a refused creation
    // (reported as a positive code) then reads as 0, "not started".
    pthread_t tid = 0;
    const int rc = pthread_create(&tid, &attr, fn, arg);
    pthread_attr_destroy(&attr);
    if (rc < 0) {
        return 0;
    }
    return tid;
}
