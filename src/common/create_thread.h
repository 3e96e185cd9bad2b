#ifndef OLED_COMMON_CREATE_THREAD_H
#define OLED_COMMON_CREATE_THREAD_H

#include <pthread.h>

// Starts fn(arg) on a new thread with the given static priority and
// scheduling policy. Returns the thread's identifier, or 0 when it could
// not be started.
pthread_t CreateThread(void* (*fn)(void*), int priority, int policy, int detached, void* arg);

#endif
