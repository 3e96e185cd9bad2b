#include "runtime_settings.h"

#include <stdio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "file_helpers.h"
#include "singleton.h"
#include "software_config.h"

int oled_type = 0;
bool oled_string_enable = false;
char oled_data[30] = {0};
bool oled_display_cpu = true;
bool oled_display_vi = true;
bool oled_display_ai = true;
bool oled_display_ethspeed = true;
bool oled_display_venc = true;
bool oled_display_temp = true;
bool oled_display_time = true;
bool oled_display_logo = false;
bool oled_display_io = false;
int oled_sleep_time = 3;
bool led_outside = false;
bool led_onboard = false;
bool oled_led_on = false;
int led_test = 0;
int input_mode = 1;
char hw_info[128] = {0};
int g_sock = 0;
char loip[10] = "127.0.0.1";

bool thread_big_loop = true;
bool thread_small_loop = true;
bool thread_led_loop = true;
bool thread_oled_ump = true;

void init_argumnt()
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    typedef SoftwareConfig C;
    auto flag = [&config](C::SoftWareConfigID id) { return str2int(config->GetConfig(id)) != 0; };

    oled_type = str2int(config->GetConfig(C::OLed_a_kind_start));
    oled_string_enable = flag(C::OLed_a_small_n_start);
    snprintf(oled_data, 21, "%s\n", config->GetConfig(C::OLed_a_small_n_buf).c_str());
    led_outside = flag(C::OLed_a_led_start);
    led_onboard = flag(C::kLed_onboard);
    oled_led_on = led_onboard || led_outside;
    oled_display_cpu = flag(C::OLed_a_cpu);
    oled_display_ai = flag(C::OLed_a_ai);
    oled_display_vi = flag(C::OLed_a_vi);
    oled_display_ethspeed = flag(C::OLed_a_net);
    oled_display_venc = flag(C::OLed_a_venc);
    oled_display_temp = flag(C::OLed_a_temp);
    oled_display_time = flag(C::OLed_a_start);
    oled_sleep_time = str2int(config->GetConfig(C::OLed_a_sleep_tim));
    oled_display_logo = flag(C::OLed_a_logo);
    oled_display_io = flag(C::OLed_a_io);

    char china_str[64];  // read and kept nowhere: the setting has no effect
    snprintf(china_str, sizeof(china_str), "%s", config->GetConfig(C::OLed_china_str).c_str());
    (void)china_str;

    if (g_sock > 2) {
        close(g_sock);  // a second run (tests) must not leak the first socket
    }
    g_sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (g_sock == -1) {
        perror("Failed create socket.");
    }
}
