#include "sim_priority.h"

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

void drop_realtime_privilege()
{
    rlimit none = {0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);

    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capget, &header, data) != 0) {
        return;
    }
    const unsigned int nice = 1u << CAP_SYS_NICE;
    data[0].effective &= ~nice;
    data[0].permitted &= ~nice;
    data[0].inheritable &= ~nice;
    syscall(SYS_capset, &header, data);
}
