#include "rack/registry.h"

#include "rack/cardtable.h"
#include "rack/overview.h"
#include "ui/viewregistry.h"
#include "ui/widgets.h"

#include <QApplication>
#include <QLabel>
#include <QPalette>

namespace {

bool beginsWithAny(const QString &name, const QStringList &prefixes) {
    for (const QString &prefix : prefixes)
        if (name.startsWith(prefix)) return true;
    return false;
}

// How a tag names its view when the previous view is hidden: longer prefixes first where a
// shorter one would also fit.
struct TagRow {
    QString prefix;
    QString form;
};

const QList<TagRow> &tagRows() {
    static const QList<TagRow> rows = {
        {"HLINK", "frmHLINKdata"}, {"H", "frmHx"},      {"Ove", "frmOverview"}, {"QF1", "frmQF16"},
        {"QT1", "frmQT16"},        {"QT3", "frmQT32"},  {"QT6", "frmQT64"},     {"QTC", "frmQTC16"},
        {"QZ1", "frmQZ16"},        {"QZ4A", "frmQZ4A"}, {"XA1", "frmQZ16"},     {"XB1", "frmXB16"},
        {"XD4", "frmXD40"},        {"XD1", "frmXD10"},  {"QV3", "frmQV32"},     {"QW3", "frmQV32"},
        {"QJS", "frmQJS8"},        {"QFR", "frmQFR8"},  {"XHK2", "frmXHK2"},    {"NON", "frmNONE"},
    };
    return rows;
}

// Tags whose view is "frm" and the tag's first three characters.
const QStringList &plainTags() {
    static const QStringList tags = {"QA4", "QA8", "QF4", "QF8", "QP4", "QP8", "QS4",
                                     "QS8", "QT8", "QL4", "QL8", "QZ2", "QZ4", "QZ8",
                                     "XC8", "XDU", "QX2", "QY2", "XE4", "XF2", "XG4"};
    return tags;
}

const QColor kInputColour(0, 0, 192);
const QColor kOutputColour(192, 0, 0);

struct ClassRow {
    QStringList prefixes;
    QString text;
    QColor colour;
};

const QList<ClassRow> &classRows() {
    static const QList<ClassRow> rows = {
        {{"QP", "QR", "QF", "QH", "QT", "QL", "QM", "QN", "QG", "QS", "QZ", "XD", "QV", "QX", "XE",
          "QI", "XG"},
         "IN",
         kInputColour},
        {{"QA", "QB", "QC", "QD", "QE"}, "IN", kInputColour},
        {{"QK", "QJ", "QU", "XA", "QW", "QO"}, "OUT", kOutputColour},
    };
    return rows;
}

const QStringList kInOutPrefixes = {"H", "XB16", "QTC16", "XC8", "XHK2", "QY2"};

void hideView(QWidget *view, QWidget *keep) {
    if (view && view != keep) view->hide();
}

} // namespace

const QList<ModelRow> &ModelRows() {
    static const QList<ModelRow> rows = {
        {{"HLINK"}, "frmHLINKdata", "HLINK"},
        {{"H"}, "frmHx", "Hx"},
        {{"QA4", "QB4", "QC4", "QD4", "QE4"}, "frmQA4", "QA4"},
        {{"QA8", "QB8", "QC8", "QD8", "QE8"}, "frmQA8", "QA8"},
        {{"QF4", "QG4", "QH4", "QJ4", "QK4"}, "frmQF4", "QF4"},
        {{"QF8", "QG8", "QH8", "QJ8", "QK8"}, "frmQF8", "QF8"},
        {{"QF1", "QG1"}, "frmQF16", "QF16"},
        {{"QL4", "QM4", "QN4"}, "frmQL4", "QL4"},
        {{"QL8"}, "frmQL8", "QL8"},
        {{"QP4", "QR4"}, "frmQP4", "QP4"},
        {{"QP8", "QR8"}, "frmQP8", "QP8"},
        {{"QS4"}, "frmQS4", "QS4"},
        {{"QS8"}, "frmQS8", "QS8"},
        {{"QU8", "QT8"}, "frmQT8", "QT8"},
        {{"QT1", "QU1"}, "frmQT16", "QT16"},
        {{"QT3", "QU3"}, "frmQT32", "QT32"},
        {{"QT6", "QU6"}, "frmQT64", "QT64"},
        {{"QTC"}, "frmQTC16", "QTC16"},
        {{"QV3", "QW3"}, "frmQV32", "QV32"},
        {{"QX2"}, "frmQX2", "QX2"},
        {{"QY2"}, "frmQY2", "QY2"},
        {{"QZ1", "XA1"}, "frmQZ16", "QZ16"},
        {{"QZ2"}, "frmQZ2", "QZ2"},
        {{"QZ4A", "QZ4B"}, "frmQZ4A", "QZ4A"},
        {{"QZ4"}, "frmQZ4", "QZ4"},
        {{"QZ8"}, "frmQZ8", "QZ8"},
        {{"XB1"}, "frmXB16", "XB16"},
        {{"XC8"}, "frmXC8", "XC8"},
        {{"XD4"}, "frmXD40", "XD40"},
        {{"XD1"}, "frmXD10", "XD10"},
        {{"XDU"}, "frmXDU", "XDU"},
        {{"XE4"}, "frmXE4", "XE4"},
        {{"XF2"}, "frmXF2", "XF2"},
        {{"QJS"}, "frmQJS8", "QJS"},
        {{"QFR"}, "frmQFR8", "QFR"},
        {{"XG4"}, "frmXG4", "XG4"},
        {{"XHK"}, "frmXHK2", "XHK2"},
        {{"NON"}, "frmNONE", "NONE"},
    };
    return rows;
}

const ModelRow *FindModelRow(const QString &name) {
    for (const ModelRow &row : ModelRows())
        if (beginsWithAny(name, row.prefixes)) return &row;
    return nullptr;
}

void OpenCardView(const QString &name) {
    const ModelRow *row = FindModelRow(name);
    if (!row) return;
    auto *view = dynamic_cast<OpenableView *>(ViewByName(row->form));
    if (view) view->OpenView(name);
}

QString FormNameOfTag(const QString &tag) {
    for (const TagRow &row : tagRows())
        if (tag.startsWith(row.prefix)) return row.form;
    const QString three = tag.left(3);
    if (three.size() == 3 && plainTags().contains(three)) return "frm" + three;
    return QString();
}

void ShowView(QWidget *form) {
    if (!form) return;
    ViewHost *host = CurrentViewHost();
    if (host) host->placeView(form);
    form->show();
    form->raise();

    if (SelFormName != PrevFormName) hideView(LoadedView(FormNameOfTag(PrevFormName)), form);
    if (!SelFormName.startsWith(QLatin1String("Ove"))) hideView(LoadedView("frmOverview"), form);
    PrevFormName = SelFormName;
    // The work area shows exactly one view, whatever the tags say.
    if (host) host->hideViewsBut(form);
}

void ShowView(const QString &formName) {
    ShowView(ViewByName(formName));
}

void ShowCardClass(int slot, const QString &name) {
    FrmOverview *overview = Overview();
    QLabel *status = overview->lblCardStatus(slot);
    for (const ClassRow &row : classRows()) {
        if (beginsWithAny(name, row.prefixes)) {
            status->setText(row.text);
            SetForeColor(status, row.colour);
            break;
        }
    }
    if (beginsWithAny(name, kInOutPrefixes)) {
        status->setText(QStringLiteral("IN/OUT"));
        SetForeColor(status, Qt::black);
    }

    QLabel *type = overview->lblCardType(slot);
    // An empty slot's word stays in the cell but takes the background's colour, so it is unseen.
    SetForeColor(type, IsEmptySlotName(name) ? QApplication::palette().color(QPalette::Window)
                                             : kInputColour);
    type->setText(DisplayName(name));
}

QString CardShowName(const QString &name) {
    if (name.isEmpty()) return name;
    const QChar c = name.back();
    const QString front = name.size() > 2 ? name.left(name.size() - 2) : QString();
    if (c >= QLatin1Char('1') && c <= QLatin1Char('9')) return front + "(" + c + ")";
    if (c >= QLatin1Char('A') && c <= QLatin1Char('G'))
        return front + "(1" + QChar(c.unicode() - 17) + ")";
    return name;
}

int MultiPowerPage(const QString &name) {
    if (name.size() != 8) return 0;
    const QChar c = name.at(7);
    if (c >= QLatin1Char('1') && c <= QLatin1Char('3')) return c.digitValue();
    return 0;
}

QString MultiPowerShowName(const QString &name) {
    const int page = MultiPowerPage(name);
    if (page == 0) return name;
    return name.left(7) + QStringLiteral("/D(%1)").arg(page);
}

QString DisplayName(const QString &name) {
    if (name.startsWith(QLatin1String("XDU"))) return MultiPowerShowName(name);
    if (name.startsWith(QLatin1Char('H'))) return CardShowName(name);
    return name;
}
