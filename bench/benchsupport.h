#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// What the benchmarks share: CPU clocks of this process and of the simulator, and a simulator
// started on its own ports folder with the program's COM resolution pointed there.
namespace Bench {

// 10 bits a byte (start, 8 data, stop) at 9600 baud.
inline constexpr double kByteMs = 10.0 * 1000.0 / 9600.0;

// User and system time of this process.
double cpuMsSelf();
// The same of another process, from /proc; -1 when it cannot be read.
double cpuMsOf(qint64 pid);

// A vxrack-sim process serving COM1 in a folder of its own.
class Simulator {
public:
    Simulator() = default;
    ~Simulator();
    Simulator(const Simulator &) = delete;
    Simulator &operator=(const Simulator &) = delete;

    // Starts `program` (empty: $VXRACK_SIM, else the one built beside the benchmark) with the
    // given extra arguments and waits for its first line. On failure returns false and a reason.
    bool start(const QString &program, const QStringList &arguments, QString *error);
    qint64 pid() const { return m_process.processId(); }
    double cpuMs() const { return cpuMsOf(pid()); }

private:
    QTemporaryDir m_portDir;
    QProcess m_process;
};

// Counts the steps and the bytes that cross the line while it lives: each command with its CR,
// each reply with its CR.
struct LineCount {
    qint64 steps = 0, sent = 0, received = 0, silent = 0;
    // Time from each command handed to the line to its reply taken in (or given up): the rest of
    // an operation's time is the program's own work between the steps.
    double waitMs = 0;
    LineCount();
    ~LineCount();
    LineCount(const LineCount &) = delete;
    LineCount &operator=(const LineCount &) = delete;
    void reset() {
        steps = sent = received = silent = 0;
        waitMs = 0;
    }
    qint64 bytes() const { return sent + received; }
    double lineMs() const { return double(bytes()) * kByteMs; }

private:
    int m_observer;
    QElapsedTimer m_step;
};

// A size field of /proc/self/status ("VmRSS", "VmHWM") in MB; -1 when it cannot be read.
double statusMb(const char *field);

// Prints "<program>: <text>" to stderr and returns 1, for `return fail(...)` in main.
int fail(const char *program, const QString &text);

} // namespace Bench
