#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>

class QLineEdit;

// One value a form shows live: its name, the box that shows it, and how the box's text reads as
// a number.
struct LiveChannel {
    QString name;
    QLineEdit *box = nullptr;
    // The number a text stands for; nothing for a text that is no value (empty, "CNG", "TMOUT").
    // Unset: PlainNumber.
    std::function<std::optional<double>(const QString &text)> number = {};
};

// A plain decimal number ("12", "-3.5", "+.5"), nothing else.
std::optional<double> PlainNumber(const QString &text);

// What a form with live values tells the tools that watch them. The form says which channels it
// shows and which card they come from, and after each live read calls shown() when the boxes hold
// the new values, or lost() when the read got no answer. The tools only look at the boxes: a feed
// never talks to the rack.
class LiveFeed : public QObject {
    Q_OBJECT
public:
    explicit LiveFeed(QObject *parent = nullptr) : QObject(parent) {}

    // The channels on show now; their names stay the same from one read to the next.
    std::function<QList<LiveChannel>()> channels;
    // The card the values come from, e.g. "QF4, slot 3": a tool keeps one card's values apart
    // from another's.
    std::function<QString()> source;

    void shown() { emit valuesShown(); }
    void lost() { emit valuesLost(); }

signals:
    void valuesShown();
    void valuesLost();
};
