#include "startup.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "board_identity.h"
#include "control_server.h"
#include "create_thread.h"
#include "led_loop.h"
#include "pin_setup.h"
#include "runtime_settings.h"
#include "screen_loops.h"
#include "signal_handler.h"
#include "singleton.h"
#include "software_config.h"
#include "trace.h"

namespace {

// Plain data, never destroyed: the LED loop may still be starting when
// the process ends.
LedSettings g_led_settings;

}  // namespace

int oled_main()
{
    if (!start_ending_thread()) {
        puts("cannot start the thread that ends the daemon on a signal");
    }
    signal(SIGINT, HandleSig);
    signal(SIGTERM, HandleSig);
    signal(SIGHUP, HandleSig);
    signal(SIGSEGV, HandleSig);

    // The board must be known before the settings store exists: some of
    // its defaults depend on it.
    get_hw_version(hw_info);

    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    config->ReadConfig();
    config->PrintConfig();
    config->SaveConfig();

    init_argumnt();
    oled_gpio_init();

    // Workers: detached, asked for FIFO at priority 10 but inheriting the
    // daemon's own scheduling. A thread that does not start is reported and
    // the others go on.
    const int kPriority = 10;
    const int kFifo = 1;
    if (oled_type == 0 && CreateThread(oled_big_loop, kPriority, kFifo, 1, nullptr) == 0) {
        trace_prefix("main", 1240);
        puts("pthread_create() faile d: oled_big_loop");
    }
    if ((oled_type & ~2) != 0 && CreateThread(oled_small_loop, kPriority, kFifo, 1, nullptr) == 0) {
        trace_prefix("main", 1248);
        puts("pthread_create() failed: oled_small_loop");
    }
    copy_led_settings(*config, g_led_settings);
    if (oled_led_on && CreateThread(oled_led_loop, kPriority, kFifo, 1, &g_led_settings) == 0) {
        trace_prefix("main", 1256);
        puts("pthread_create() failed: eth_tid_led");
    }

    // The port is fixed: the stored port keys do not choose it.
    if (!oled_ump(16124)) {
        // The workers still run: nothing at exit may wait for them.
        fflush(stdout);
        _exit(EXIT_FAILURE);
    }
    config.reset();
    // Only a handled signal stops the control server: the ending thread
    // ends the process, with its status, and main must not race it.
    while (process_is_ending()) {
        pause();
    }
    return 0;
}
