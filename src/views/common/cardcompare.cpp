#include "views/common/cardcompare.h"

#include "link/exchange.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "ui/viewregistry.h"
#include "views/common/cardview.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <memory>

namespace {

// What a cell holds before a worker runs: no card and no field ever gives it.
const QString kUnset = QStringLiteral("\x01unset");

CardRecord marked(const CardRecord &record) {
    CardRecord marks = record;
    for (int k = 1; k <= CardRecord::kParams; ++k)
        marks.Param(k) = kUnset;
    for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
        marks.ChParam(ch) = kUnset;
    return marks;
}

// A record whose every cell names itself, and the text a field shows for it.
QString cellMark(Cell kind, int index) {
    return QStringLiteral("\x01%1%2").arg(kind == Cell::Param ? 'P' : 'C').arg(index);
}

CardRecord selfNamed(const CardRecord &record) {
    CardRecord marks = record;
    for (int k = 1; k <= CardRecord::kParams; ++k)
        marks.Param(k) = cellMark(Cell::Param, k);
    for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
        marks.ChParam(ch) = cellMark(Cell::ChParam, ch);
    return marks;
}

struct HeldWrite {
    QString group;
    QString item;
    QString data;
};

// Installs a hold for as long as it lives: the writes are kept here and answered with the echo
// a card gives.
class DryRun {
public:
    DryRun() {
        SetWriteHold([this](const QString &group, const QString &item, const QString &data) {
            writes.append({group, item, data});
            return data;
        });
    }
    ~DryRun() { SetWriteHold({}); }
    DryRun(const DryRun &) = delete;
    DryRun &operator=(const DryRun &) = delete;

    bool wroteItem(int item) const {
        for (const HeldWrite &write : writes)
            if (write.item.toInt() == item) return true;
        return false;
    }
    QList<HeldWrite> writes;
};

// A scratch copy of the view, entered on the same card as the view was, without a word to it.
std::unique_ptr<CardView> scratchOf(const CardView &view) {
    std::unique_ptr<CardView> scratch(
        qobject_cast<CardView *>(MakeViewInstance(view.objectName())));
    if (!scratch) return nullptr;
    scratch->build();
    scratch->fraSetModel->setTitle(view.fraSetModel->title());
    scratch->txtCardType->setText(view.txtCardType->text());
    scratch->txtCardNo->setText(view.txtCardNo->text());
    scratch->txtVerNo->setText(view.txtVerNo->text());
    // Never shown, its first tick finds it hidden and its cycle ends there.
    scratch->SetScaleMinMax(view.fraSetModel->title());
    return scratch;
}

void copyState(const QWidget *from, QWidget *to) {
    for (const QByteArray &name : from->dynamicPropertyNames())
        if (!name.startsWith("_q_")) to->setProperty(name.constData(), from->property(name));
    to->setHidden(from->isHidden());
    if (auto *edit = qobject_cast<const QLineEdit *>(from)) {
        static_cast<QLineEdit *>(to)->setText(edit->text());
    } else if (auto *list = qobject_cast<const QComboBox *>(from)) {
        auto *target = static_cast<QComboBox *>(to);
        const int index = target->findText(list->currentText());
        if (index >= 0)
            target->setCurrentIndex(index);
        else if (target->isEditable())
            target->setEditText(list->currentText());
        else if (list->currentIndex() < target->count())
            target->setCurrentIndex(list->currentIndex());
    } else if (auto *check = qobject_cast<const QCheckBox *>(from)) {
        static_cast<QCheckBox *>(to)->setCheckState(check->checkState());
    } else if (auto *button = qobject_cast<const QAbstractButton *>(from)) {
        if (button->isCheckable())
            static_cast<QAbstractButton *>(to)->setChecked(button->isChecked());
    } else if (auto *whole = qobject_cast<const QSpinBox *>(from)) {
        static_cast<QSpinBox *>(to)->setValue(whole->value());
    } else if (auto *real = qobject_cast<const QDoubleSpinBox *>(from)) {
        static_cast<QDoubleSpinBox *>(to)->setValue(real->value());
    } else if (auto *text = qobject_cast<const QPlainTextEdit *>(from)) {
        auto *target = static_cast<QPlainTextEdit *>(to);
        if (target->toPlainText() != text->toPlainText()) target->setPlainText(text->toPlainText());
    }
}

QTableWidgetItem *cellItem(const QString &text, bool quiet = false) {
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    if (quiet) {
        QFont font = item->font();
        font.setItalic(true);
        item->setFont(font);
        item->setForeground(QColor(110, 110, 110));
    }
    return item;
}

const QColor kDiffersColour(255, 215, 215);
const QColor kNoAnswerColour(255, 245, 200);

QPointer<FrmCompare> &compareDialog() {
    static QPointer<FrmCompare> dialog;
    return dialog;
}

} // namespace

bool CompareRow::differs() const {
    if (!read || !written || !answered() || onCard == toWrite) return false;
    bool cardIsNumber = false;
    bool writtenIsNumber = false;
    const double card = onCard.toDouble(&cardIsNumber);
    const double written = toWrite.toDouble(&writtenIsNumber);
    return !(cardIsNumber && writtenIsNumber && card == written);
}

int CompareResult::differing() const {
    int count = 0;
    for (const CompareRow &row : rows)
        if (row.differs()) ++count;
    return count;
}

int CompareResult::unanswered() const {
    int count = 0;
    for (const CompareRow &row : rows)
        if (!row.answered()) ++count;
    return count;
}

void CopyControlStates(const QWidget &from, QWidget &to) {
    // Controls of one name pair up in the order they were made.
    QHash<QString, QList<QWidget *>> targets;
    for (QWidget *w : to.findChildren<QWidget *>())
        if (!w->objectName().isEmpty()) targets[w->objectName()].append(w);
    QHash<QString, int> used;
    for (const QWidget *w : from.findChildren<QWidget *>()) {
        if (w->objectName().isEmpty()) continue;
        const int n = used[w->objectName()]++;
        QWidget *target = targets.value(w->objectName()).value(n);
        if (target && target->metaObject() == w->metaObject()) copyState(w, target);
    }
}

CompareResult CardCompare::Run(CardView &view) {
    CompareResult result;
    result.source = view.liveFeed->source();
    result.when = QDateTime::currentDateTime();
    result.lineOpen = Link::port() && Link::port()->isOpen();

    CardRecord &record = view.record();
    const CardRecord saved = record;
    CardRecord download;
    {
        DryRun dry;
        std::unique_ptr<CardView> scratch = scratchOf(view);
        if (!scratch) return result;
        // Where the plan does not name a cell, the text box that shows it does.
        record = selfNamed(saved);
        scratch->ViewRefresh();
        QHash<QString, QString> boxOfMark;
        for (const QLineEdit *box : scratch->findChildren<QLineEdit *>())
            if (box->text().startsWith(QChar(1))) boxOfMark.insert(box->text(), box->objectName());
        record = marked(saved);
        scratch->TakeEditsFrom(view);
        dry.writes.clear(); // only the Download's own writes count
        scratch->ViewDownload();
        download = record;
        for (const HeldWrite &write : dry.writes)
            result.heldWrites.append(
                QStringLiteral("G%1 I%2 D%3").arg(write.group, write.item, write.data));

        // The card's side: the view's own Upload, reading into the scratch copy.
        SetWriteHold({});
        record = marked(saved);
        // A read that failed may still leave a value in its cell (a flag shows "0"), so the
        // steps that went unanswered are counted on the line itself.
        const int watch = Link::addTrafficObserver([&result](Link::Traffic kind, const QString &) {
            if (kind == Link::Traffic::NoReply) ++result.noReplies;
        });
        scratch->ViewUpload();
        Link::removeTrafficObserver(watch);
        const CardRecord card = record;
        record = saved;

        const auto addRow = [&](Cell kind, int index, const QString &onCard,
                                const QString &toWrite) {
            CompareRow row;
            row.read = onCard != kUnset;
            row.written = toWrite != kUnset;
            // A cell the Download fills without sending its item (a field kept for the record
            // only) is not written to the card.
            int ch = 0;
            if (const ParamSpec *param = view.ParamOfCell(kind, index, ch))
                row.written = row.written && param->item && dry.wroteItem(param->item(ch));
            if (!row.read && !row.written) return;
            row.name = view.CellName(kind, index);
            if (row.name.isEmpty()) {
                const QString box = boxOfMark.value(cellMark(kind, index));
                row.name = box.startsWith(QLatin1String("txt")) ? box.mid(3) : box;
            }
            if (row.name.isEmpty())
                row.name = QString::fromLatin1(kind == Cell::Param ? "Param(%1)" : "ChParam(%1)")
                               .arg(index);
            row.onCard = row.read ? onCard : QString();
            row.toWrite = row.written ? toWrite : QString();
            result.rows.append(row);
        };
        for (int k = 1; k <= CardRecord::kParams; ++k)
            addRow(Cell::Param, k, card.Param(k), download.Param(k));
        for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
            addRow(Cell::ChParam, ch, card.ChParam(ch), download.ChParam(ch));
    }
    return result;
}

// ---- The window -------------------------------------------------------------------------------

FrmCompare::FrmCompare(QWidget *parent) : QDialog(parent) {
    setObjectName("frmCompare");
    setWindowTitle("Compare before Download");
    resize(620, 560);
    auto *layout = new QVBoxLayout(this);
    lblSource = new QLabel(this);
    lblSource->setObjectName("lblSource");
    lblSource->setWordWrap(true);
    layout->addWidget(lblSource);
    tblCompare = new QTableWidget(0, 4, this);
    tblCompare->setObjectName("tblCompare");
    tblCompare->setHorizontalHeaderLabels({"", "Parameter", "On the card", "Download writes"});
    tblCompare->verticalHeader()->setVisible(false);
    // One line a parameter: a card has up to a hundred of them.
    tblCompare->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    tblCompare->setSelectionBehavior(QAbstractItemView::SelectRows);
    tblCompare->setEditTriggers(QAbstractItemView::NoEditTriggers);
    QHeaderView *header = tblCompare->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Fixed);
    tblCompare->setColumnWidth(0, 24);
    header->setSectionResizeMode(1, QHeaderView::Stretch);
    header->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(3, QHeaderView::ResizeToContents);
    layout->addWidget(tblCompare, 1);
    lblSummary = new QLabel(this);
    lblSummary->setObjectName("lblSummary");
    lblSummary->setWordWrap(true);
    layout->addWidget(lblSummary);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    cmdDownload = new QPushButton("Download", this);
    cmdDownload->setObjectName("cmdDownload");
    cmdDownload->setAutoDefault(false);
    cmdClose = new QPushButton("Close", this);
    cmdClose->setObjectName("cmdClose");
    cmdClose->setDefault(true);
    buttons->addWidget(cmdDownload);
    buttons->addWidget(cmdClose);
    layout->addLayout(buttons);
    connect(cmdDownload, &QPushButton::clicked, this, &FrmCompare::cmdDownload_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);
}

void FrmCompare::showResult(CardView *view, const CompareResult &result) {
    m_view = view;
    lblSource->setText(QStringLiteral("%1, read at %2. Beside each value on the card stands what "
                                      "Download would write; rows that differ are marked.")
                           .arg(result.source, result.when.toString("hh:mm:ss")));
    tblCompare->setRowCount(static_cast<int>(result.rows.size()));
    for (int r = 0; r < result.rows.size(); ++r) {
        const CompareRow &row = result.rows.at(r);
        tblCompare->setItem(r, 0, cellItem(row.differs() ? QStringLiteral("≠") : QString()));
        tblCompare->setItem(r, 1, cellItem(row.name));
        tblCompare->setItem(r, 2,
                            !row.read         ? cellItem("(not read)", true)
                            : !row.answered() ? cellItem("(no answer)", true)
                                              : cellItem(row.onCard));
        tblCompare->setItem(r, 3,
                            row.written ? cellItem(row.toWrite) : cellItem("(not written)", true));
        const QColor colour = row.differs()     ? kDiffersColour
                              : !row.answered() ? kNoAnswerColour
                                                : QColor();
        if (colour.isValid())
            for (int c = 0; c < tblCompare->columnCount(); ++c)
                tblCompare->item(r, c)->setBackground(colour);
    }

    QString summary;
    const int rows = static_cast<int>(result.rows.size());
    const int unanswered = result.unanswered();
    int read = 0;
    for (const CompareRow &row : result.rows)
        if (row.read) ++read;
    if (!result.lineOpen) {
        summary = "The line is not open: nothing could be read from the card. Connect first.";
    } else if (rows == 0) {
        summary = "This view has no parameters to compare.";
    } else if (read > 0 && unanswered == read) {
        summary = "The card did not answer: no value could be read. The line may be lost.";
    } else if (result.noReplies > 0) {
        summary = QStringLiteral("The card did not answer (%1 steps without a reply): the values "
                                 "on the card are not sure. The line may be lost; compare again "
                                 "once it is back.")
                      .arg(result.noReplies);
    } else {
        summary =
            result.differing() == 0
                ? QStringLiteral("No parameter differs (%1 compared).").arg(rows)
                : QStringLiteral("%1 of %2 parameters differ.").arg(result.differing()).arg(rows);
        if (unanswered > 0)
            summary += QStringLiteral(" %1 got no answer from the card.").arg(unanswered);
    }
    if (result.heldWrites.isEmpty() && rows > 0)
        summary += " The Download would write nothing: it stops at its checks.";
    lblSummary->setText(summary);
    cmdDownload->setEnabled(view && view->cmdDown && view->cmdDown->isEnabled() && IsConnected);
}

void FrmCompare::cmdDownload_Click() {
    accept();
    if (m_view && m_view->cmdDown && m_view->cmdDown->isEnabled()) m_view->cmdDown->click();
}

void ShowCompare(CardView &view, const CompareResult &result) {
    QPointer<FrmCompare> &dialog = compareDialog();
    if (!dialog) dialog = new FrmCompare(view.window());
    dialog->showResult(&view, result);
    dialog->open();
}

FrmCompare *CompareDialog() {
    return compareDialog();
}
