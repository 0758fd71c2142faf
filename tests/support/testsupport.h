#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <vector>

namespace vxtest {
using Factory = std::function<std::unique_ptr<QObject>()>;
int registerTest(Factory factory);
} // namespace vxtest

// Registers a QObject test class with the folder's test executable.
#define VX_TEST(Class)                                                                             \
    static const int vx_registered_##Class =                                                       \
        vxtest::registerTest([] { return std::unique_ptr<QObject>(new Class); });
