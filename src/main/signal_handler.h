#ifndef OLED_MAIN_SIGNAL_HANDLER_H
#define OLED_MAIN_SIGNAL_HANDLER_H

// Ends the process on SIGINT, SIGTERM, SIGHUP and SIGSEGV, on whichever
// thread takes them: the handler notes the first signal and wakes the
// ending thread, which prints the two lines, clears the thread flags,
// waits a second and exits with status 255. A thread that faulted waits
// for that end.
void HandleSig(int sig);

// Starts the ending thread; start-up calls it before it installs
// HandleSig. False when it could not start: HandleSig then ends the
// process at once, without the lines.
bool start_ending_thread();

// True once a signal was handled: the process is about to end.
bool process_is_ending();

#endif
