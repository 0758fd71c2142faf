#pragma once

#include <QColor>
#include <QString>

class QGroupBox;
class QLabel;
class QPushButton;
class QWidget;

// Small builders for the controls the frame and its dialogs repeat, and the colours of labels and
// lamps. Colours live in the widget's palette: text in WindowText, background in Window.

QGroupBox *MakeFrame(QWidget *parent, const QString &name, const QString &caption);
QPushButton *MakeButton(QWidget *parent, const QString &name, const QString &caption);
// A label; `name` may be empty for fixed captions nobody addresses.
QLabel *MakeLabel(QWidget *parent, const QString &name, const QString &text);

void SetForeColor(QWidget *widget, const QColor &colour);
void SetBackColor(QWidget *widget, const QColor &colour);
QColor ForeColor(const QWidget *widget);
QColor BackColor(const QWidget *widget);

// A round lamp; its colour is its background colour (BackColor), set with SetLampColor.
QWidget *MakeLamp(QWidget *parent, const QString &name, int diameter);
void SetLampColor(QWidget *lamp, const QColor &colour);
