#include "rack/limits.h"

bool InRange(double value, const Limit &limit) {
    // Written so that a NaN fails both comparisons and therefore the test.
    return value >= limit.minimum && value <= limit.maximum;
}
