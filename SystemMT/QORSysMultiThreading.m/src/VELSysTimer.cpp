#include "VELSysTimer.h"

int VELSysTimerGetTimeOfDay(timeval* time) {
    return time && gettimeofday(time, nullptr) == 0 ? 0 : -1;
}
