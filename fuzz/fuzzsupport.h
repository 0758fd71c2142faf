#pragma once

#include "link/clock.h"
#include "ui/people.h"

#include <QApplication>
#include <QByteArray>
#include <cstdio>
#include <cstdlib>

// What every target needs before its first input: an application object for the event loop and
// the widgets, off screen, and message boxes that answer themselves instead of waiting for a user.
namespace fuzz {

inline void startApplication() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "*.debug=false;qt.qpa.*=false");
    static int argc = 1;
    static char name[] = "vxfuzz";
    static char *argv[] = {name, nullptr};
    // Never destroyed: at exit the toolkit's own globals may already be gone.
    static QApplication *app = new QApplication(argc, argv);
    Q_UNUSED(app);
    People::setMessageHandler([](const People::Message &) { return People::Answer::Ok; });
}

// A broken promise of the code under test: report it and stop, so libFuzzer keeps the input.
[[noreturn]] inline void fail(const char *what, const QByteArray &detail = QByteArray()) {
    std::fprintf(stderr, "fuzz check failed: %s\n%s\n", what, detail.constData());
    std::abort();
}

inline void check(bool condition, const char *what, const QByteArray &detail = QByteArray()) {
    if (!condition) fail(what, detail);
}

} // namespace fuzz
