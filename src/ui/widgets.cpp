#include "ui/widgets.h"

#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace {

class Lamp : public QWidget {
public:
    Lamp(QWidget *parent, int diameter) : QWidget(parent) { setFixedSize(diameter, diameter); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(palette().color(QPalette::Window));
        painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
};

} // namespace

QGroupBox *MakeFrame(QWidget *parent, const QString &name, const QString &caption) {
    auto *frame = new QGroupBox(caption, parent);
    frame->setObjectName(name);
    return frame;
}

QPushButton *MakeButton(QWidget *parent, const QString &name, const QString &caption) {
    auto *button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QLabel *MakeLabel(QWidget *parent, const QString &name, const QString &text) {
    auto *label = new QLabel(text, parent);
    if (!name.isEmpty()) label->setObjectName(name);
    return label;
}

void SetForeColor(QWidget *widget, const QColor &colour) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    widget->setPalette(palette);
}

void SetBackColor(QWidget *widget, const QColor &colour) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, colour);
    palette.setColor(QPalette::Base, colour);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
    widget->update();
}

QColor ForeColor(const QWidget *widget) {
    return widget->palette().color(QPalette::WindowText);
}
QColor BackColor(const QWidget *widget) {
    return widget->palette().color(QPalette::Window);
}

QWidget *MakeLamp(QWidget *parent, const QString &name, int diameter) {
    auto *lamp = new Lamp(parent, diameter);
    lamp->setObjectName(name);
    return lamp;
}

void SetLampColor(QWidget *lamp, const QColor &colour) {
    QPalette palette = lamp->palette();
    palette.setColor(QPalette::Window, colour);
    lamp->setPalette(palette);
    lamp->update();
}
