#include "views/field/fieldkit.h"

#include "ui/people.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QTimer>
#include <cmath>

namespace FieldKit {

namespace {

const char *const kRefused = "fieldRefused";

class LeaveGuard : public QObject {
public:
    LeaveGuard(QWidget *field, Check check, const QList<QWidget *> &exempt, bool selectAll)
        : QObject(field), m_field(field), m_check(std::move(check)), m_selectAll(selectAll) {
        for (QWidget *w : exempt)
            m_exempt.append(w);
    }

    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched != m_field || event->type() != QEvent::FocusOut) return false;
        switch (static_cast<QFocusEvent *>(event)->reason()) {
        case Qt::TabFocusReason:
        case Qt::BacktabFocusReason:
        case Qt::MouseFocusReason:
        case Qt::ShortcutFocusReason:
        case Qt::OtherFocusReason:
            break;
        default:
            return false; // a menu, a list's popup, another window
        }
        // A form being put away is not left for another of its controls.
        if (!m_field->isVisible()) return false;
        QWidget *next = QApplication::focusWidget();
        for (const QPointer<QWidget> &w : m_exempt)
            if (w && w == next) return false;
        const QString message = m_check();
        m_field->setProperty(kRefused, !message.isEmpty());
        if (message.isEmpty()) return false;
        People::message(message, QString(), People::Icon::Information);
        // Back into the field once the focus change has settled.
        QPointer<QWidget> field(m_field);
        const bool selectAll = m_selectAll;
        QTimer::singleShot(0, m_field, [field, selectAll] {
            if (!field || !field->isVisible()) return;
            field->setFocus(Qt::OtherFocusReason);
            if (!selectAll) return;
            if (auto *line = qobject_cast<QLineEdit *>(field)) line->selectAll();
            if (auto *text = qobject_cast<QPlainTextEdit *>(field)) text->selectAll();
        });
        return false;
    }

private:
    QWidget *m_field;
    Check m_check;
    QList<QPointer<QWidget>> m_exempt;
    bool m_selectAll;
};

} // namespace

void InstallLeaveCheck(QWidget *field, Check check, const QList<QWidget *> &exempt,
                       bool selectAll) {
    field->installEventFilter(new LeaveGuard(field, std::move(check), exempt, selectAll));
}

bool AnyRefused(const QWidget *form) {
    for (const QWidget *w : form->findChildren<QWidget *>())
        if (w->property(kRefused).toBool()) return true;
    return false;
}

void ClearRefused(QWidget *form) {
    for (QWidget *w : form->findChildren<QWidget *>())
        if (w->property(kRefused).toBool()) w->setProperty(kRefused, false);
}

void SetListColour(QComboBox *list, const QColor &colour) {
    QPalette palette = list->palette();
    for (QPalette::ColorRole role : {QPalette::Button, QPalette::Base, QPalette::Window})
        palette.setColor(role, colour);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    list->setPalette(palette);
    list->setAutoFillBackground(true);
}

QColor ListColour(const QComboBox *list) {
    return list->palette().color(QPalette::Button);
}

bool ParseNumber(const QString &text, double &value) {
    static const QRegularExpression number(QStringLiteral("^[+-]?(\\d+\\.?\\d*|\\.\\d+)$"));
    if (!number.match(text).hasMatch()) return false;
    bool ok = false;
    value = text.toDouble(&ok);
    return ok && std::isfinite(value);
}

long long RoundWhole(double value) {
    return std::llround(value);
}

} // namespace FieldKit
