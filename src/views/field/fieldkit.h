#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <functional>

class QComboBox;
class QWidget;

// What the field-device views share: the check a field makes when the user leaves it, list
// colours, and the number syntax of their fields.
namespace FieldKit {

// Gives the message for a refused text, or the empty text when the field passes (a check may
// rewrite the field's text then).
using Check = std::function<QString()>;

// Runs `check` when `field` loses the focus to another control of its window; leaving for one of
// `exempt` (a command that fills the field anew), for a menu, a list or another window does not
// count. A refusal shows its message with the information icon and gives the focus back to the
// field, its text selected when `selectAll` is set; the field then stands refused until a check
// passes, so that no command sends what was refused.
void InstallLeaveCheck(QWidget *field, Check check, const QList<QWidget *> &exempt = {},
                       bool selectAll = false);
// True while a field of `form` stands refused.
bool AnyRefused(const QWidget *form);
// Forgets the refusals of `form`, for a form whose fields are filled anew.
void ClearRefused(QWidget *form);

// The background of a list, the one thing its colour rule changes.
void SetListColour(QComboBox *list, const QColor &colour);
QColor ListColour(const QComboBox *list);
inline const QColor kListGreen{0, 128, 0};
inline const QColor kListRed{255, 0, 0};

// A plain decimal number: an optional sign, digits with at most one point. Anything else, the
// empty text included, gives false.
bool ParseNumber(const QString &text, double &value);
// Rounds half away from zero, as the fields' formats do.
long long RoundWhole(double value);

} // namespace FieldKit
