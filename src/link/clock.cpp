#include "link/clock.h"

#include <QThread>
#include <algorithm>

namespace {
int g_divisor = 1;
}

namespace Clock {

int ms(int productionMs) {
    if (productionMs <= 0) return 0;
    return std::max(1, productionMs / g_divisor);
}

void setDivisor(int divisor) { g_divisor = std::max(1, divisor); }

int divisor() { return g_divisor; }

void pause(int productionMs) { QThread::msleep(static_cast<unsigned long>(ms(productionMs))); }

} // namespace Clock
