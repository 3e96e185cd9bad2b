#ifndef OLED_MAIN_SIGNAL_HANDLER_H
#define OLED_MAIN_SIGNAL_HANDLER_H

// Ends the process on SIGINT, SIGTERM, SIGHUP and SIGSEGV: the two lines,
// the flags cleared, a second's grace, status 255. It runs once per
// process; SIGINT, SIGTERM and SIGHUP are taken on the thread that called
// take_stop_signals_here(), SIGSEGV on the thread that faulted.
void HandleSig(int sig);

// Makes the calling thread the one that takes SIGINT, SIGTERM and SIGHUP.
// Start-up calls it on the main thread before it installs HandleSig.
void take_stop_signals_here();

#endif
