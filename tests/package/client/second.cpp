// A second unit with the same headers: what they define must not be defined twice.
#include <QORSysTS.h>
