#include "runtime_settings.h"

#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "file_helpers.h"
#include "singleton.h"
#include "software_config.h"

int oled_type = 0;
RelaxedAtomic<bool> oled_string_enable(false);
char oled_data[30] = {0};
RelaxedAtomic<bool> oled_display_cpu(true);
RelaxedAtomic<bool> oled_display_vi(true);
RelaxedAtomic<bool> oled_display_ai(true);
RelaxedAtomic<bool> oled_display_ethspeed(true);
RelaxedAtomic<bool> oled_display_venc(true);
RelaxedAtomic<bool> oled_display_temp(true);
RelaxedAtomic<bool> oled_display_time(true);
RelaxedAtomic<bool> oled_display_logo(false);
RelaxedAtomic<bool> oled_display_io(false);
RelaxedAtomic<int> oled_sleep_time(3);
RelaxedAtomic<bool> led_outside(false);
bool led_onboard = false;
RelaxedAtomic<bool> oled_led_on(false);
RelaxedAtomic<int> led_test(0);
int input_mode = 1;
char hw_info[128] = {0};
int g_sock = 0;
char loip[10] = "127.0.0.1";

RelaxedAtomic<bool> thread_big_loop(true);
RelaxedAtomic<bool> thread_small_loop(true);
RelaxedAtomic<bool> thread_led_loop(true);
RelaxedAtomic<bool> thread_oled_ump(true);

namespace {

// Guards oled_data. Never destroyed: a loop may still hold it while exit()
// runs the destructors.
std::mutex& custom_text_lock()
{
    static std::mutex* lock = new std::mutex;
    return *lock;
}

}  // namespace

void publish_custom_text(const std::string& text)
{
    std::lock_guard<std::mutex> hold(custom_text_lock());
    strncpy(oled_data, text.c_str(), kCustomTextBytes);
    // A 21-byte text is not terminated by the copy; the screens read the
    // line as a C string, so the byte after it stays a terminator.
    oled_data[kCustomTextBytes] = '\0';
}

std::string custom_text()
{
    std::lock_guard<std::mutex> hold(custom_text_lock());
    return std::string(oled_data, strnlen(oled_data, sizeof(oled_data)));
}

void init_argumnt()
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    typedef SoftwareConfig Config;
    auto flag = [&config](Config::SoftWareConfigID id) { return str2int(config->GetConfig(id)) != 0; };

    oled_type = str2int(config->GetConfig(Config::OLed_a_kind_start));
    oled_string_enable = flag(Config::OLed_a_small_n_start);
    const std::string text = config->GetConfig(Config::OLed_a_small_n_buf);
    {
        std::lock_guard<std::mutex> hold(custom_text_lock());
        snprintf(oled_data, 21, "%s\n", text.c_str());
    }
    led_outside = flag(Config::OLed_a_led_start);
    led_onboard = flag(Config::kLed_onboard);
    oled_led_on = led_onboard || led_outside;
    oled_display_cpu = flag(Config::OLed_a_cpu);
    oled_display_ai = flag(Config::OLed_a_ai);
    oled_display_vi = flag(Config::OLed_a_vi);
    oled_display_ethspeed = flag(Config::OLed_a_net);
    oled_display_venc = flag(Config::OLed_a_venc);
    oled_display_temp = flag(Config::OLed_a_temp);
    oled_display_time = flag(Config::OLed_a_start);
    oled_sleep_time = str2int(config->GetConfig(Config::OLed_a_sleep_tim));
    oled_display_logo = flag(Config::OLed_a_logo);
    oled_display_io = flag(Config::OLed_a_io);

    char china_str[64];  // read and kept nowhere: the setting has no effect
    snprintf(china_str, sizeof(china_str), "%s", config->GetConfig(Config::OLed_china_str).c_str());
    (void)china_str;

    if (g_sock > 2) {
        close(g_sock);  // a second run (tests) must not leak the first socket
    }
    g_sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (g_sock == -1) {
        perror("Failed create socket.");
    }
}
