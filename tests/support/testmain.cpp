#include "testsupport.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTest>

namespace vxtest {

std::vector<Factory> &registry() {
    static std::vector<Factory> factories;
    return factories;
}

int registerTest(Factory factory) {
    registry().push_back(std::move(factory));
    return 0;
}

} // namespace vxtest

// Runs every registered test class; a failure in one does not stop the others.
int main(int argc, char **argv) {
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QStringList args;
    for (int n = 0; n < argc; ++n)
        args << QString::fromLocal8Bit(argv[n]);
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer reports a fault and aborts. Qt's crash handler, installed once per test
    // class, would catch that abort and hand it back to itself without end.
    args << QStringLiteral("-nocrashhandler");
#endif
    int failed = 0;
    for (const auto &make : vxtest::registry()) {
        std::unique_ptr<QObject> test = make();
        failed += QTest::qExec(test.get(), args) != 0 ? 1 : 0;
    }
    return failed;
}
