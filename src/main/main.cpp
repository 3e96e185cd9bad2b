#include "startup.h"

int main()
{
    return oled_main();
}
