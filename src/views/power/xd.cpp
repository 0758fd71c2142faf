#include "views/power/xd.h"

#include "link/clock.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/viewbuilders.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <array>

namespace {

using ViewBuilders::arrayName;

QString liveName(int row, int index) {
    return arrayName(QStringLiteral("txtParData%1").arg(row, 2, 10, QLatin1Char('0')), index);
}

ViewSpec xdSpec(const QString &form, const QString &tag, int liveWords) {
    ViewSpec spec;
    spec.formName = form;
    spec.tag = tag;
    // The live pass reads one word a "channel": the channels of the common view are the words.
    spec.channels = liveWords;
    spec.acceptance = Acceptance::NotEmpty;
    spec.keyFilters = false;
    return spec;
}

// The one-circuit card: bias and gain of W, var, cos and Hz, then the energy and power scaling,
// the transformer ratings and the drop-out level, in the order of the card's Upload.
XdPlan xd10Plan() {
    XdPlan plan;
    plan.otherCurrentModels = {"XD1A", "XD1B"};
    plan.liveWords = 12;
    for (int k = 1; k <= 4; ++k) {
        plan.fields.append({arrayName("txtBias", k), 2 * k + 8, 2 * k + 8, 2 * k - 1});
        plan.fields.append({arrayName("txtGain", k), 2 * k + 9, 2 * k + 9, 2 * k, true, k});
    }
    plan.fields += {
        {"txtZScale(1)", 18, 18, 9, true, 5},
        {"txtZScale(2)", 42, 42, 11},
        {"txtFScale(2)", 35, 35, 12, true, 6},
        {"txtZScale(3)", 50, 50, 13},
        {"txtFScale(3)", 51, 51, 14, true, 7},
        {"txtCTScale1", 61, 83, 15},
        {"txtCTScale2", 62, 84, 16},
        {"txtCTScale3", 63, 0, 17, false, 9},
        {"txtPTScale1", 58, 58, 18},
        {"txtPTScale2", 59, 59, 19},
        {"txtPTScale3", 60, 60, 20, false},
        {"txtZeroScale", 82, 82, 21, true, 11},
        {"txtZScale(4)", 19, 19, 22},
        {"txtZScale(5)", 44, 44, 24},
        {"txtFScale(5)", 37, 37, 25, true, 12},
    };
    return plan;
}

// The four-circuit card: eight fields a circuit, then the common voltage ratings and drop-out.
XdPlan xd40Plan() {
    XdPlan plan;
    plan.otherCurrentModels = {"XD4A", "XD4B"};
    plan.liveWords = 16;
    for (int e = 1; e <= 4; ++e) {
        const int cell = 8 * (e - 1);
        plan.fields += {
            {arrayName("txtBias", e), 2 * e + 8, 2 * e + 8, cell + 1},
            {arrayName("txtGain", e), 2 * e + 9, 2 * e + 9, cell + 2},
            {arrayName("txtUScale", e), e + 17, e + 17, cell + 3},
            {arrayName("txtZScale", e), 2 * e + 48, 2 * e + 48, cell + 4},
            {arrayName("txtFScale", e), 2 * e + 49, 2 * e + 49, cell + 5},
            {arrayName("txtCTScale1", e), 3 * e + 58, 2 * e + 81, cell + 6},
            {arrayName("txtCTScale2", e), 3 * e + 59, 2 * e + 82, cell + 7},
            {arrayName("txtCTScale3", e), 3 * e + 60, 0, cell + 8, true, 2 * e},
        };
    }
    plan.fields += {
        {"txtPTScale1", 58, 58, 33},
        {"txtPTScale2", 59, 59, 34},
        {"txtPTScale3", 60, 60, 35},
        {"txtZeroScale", 82, 82, 36, true, 12},
    };
    return plan;
}

// How a four-circuit card lays out its sixteen words, by the eighth character of its model:
// the caption of each live row (null: hidden), which rows show, and where word n goes as
// row * 10 + circuit (0: nowhere).
struct WordLayout {
    char code;
    std::array<const char *, 4> labels;
    std::array<bool, 4> shown;
    std::array<int, 16> places;
};

const WordLayout kWordLayouts[] = {
    {'0',
     {"W", nullptr, "Whi", "Who"},
     {true, false, true, true},
     {11, 12, 13, 14, 31, 32, 33, 34, 41, 42, 43, 44, 0, 0, 0, 0}},
    {'1',
     {"W", nullptr, "Whi-L", "Whi-H"},
     {true, false, true, true},
     {11, 12, 13, 14, 31, 41, 32, 42, 33, 43, 34, 44, 0, 0, 0, 0}},
    {'2',
     {nullptr, nullptr, "Whi", "Who"},
     {true, true, false, false},
     {11, 12, 13, 14, 21, 22, 23, 24, 0, 0, 0, 0, 0, 0, 0, 0}},
    {'3',
     {"Whi-L", "Whi-H", "Who-L", "Who-H"},
     {true, true, true, true},
     {11, 21, 12, 22, 13, 23, 14, 24, 31, 41, 32, 42, 33, 43, 34, 44}},
};

// A titled frame in `row` with a grid inside.
QGridLayout *frameGrid(QWidget *parent, QBoxLayout *row, const QString &title) {
    auto *frame = new QGroupBox(title, parent);
    auto *grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(3);
    row->addWidget(frame);
    return grid;
}

// Column captions along the first row of a grid, from column `first` on.
void columnCaptions(QWidget *parent, QGridLayout *grid, const QStringList &captions,
                    int first = 1) {
    for (int c = 0; c < captions.size(); ++c)
        grid->addWidget(ViewBuilders::caption(parent, captions.at(c), true), 0, first + c);
}

// The caption of the ratings' middle column, which the model rules change.
QLabel *ratingColumnLabel(QGridLayout *ratings) {
    auto *label = qobject_cast<QLabel *>(ratings->itemAtPosition(0, 2)->widget());
    label->setObjectName("lblRatingU");
    return label;
}

} // namespace

PowerTransducerView::PowerTransducerView(ViewSpec spec, XdPlan plan, QWidget *parent)
    : CardView(std::move(spec), parent), m_xd(std::move(plan)) {}

QLineEdit *PowerTransducerView::named(const QString &objectName) const {
    return findChild<QLineEdit *>(objectName);
}

QLineEdit *PowerTransducerView::addField(QGridLayout *grid, int row, int column,
                                         const QString &name, bool locked, int chars) {
    QWidget *parent = grid->parentWidget();
    QLineEdit *box = locked ? ViewBuilders::valueField(parent, name, chars)
                            : ViewBuilders::field(parent, name, chars);
    if (!locked) InstallSelectAllOnFocus(box);
    grid->addWidget(box, row, column, Qt::AlignHCenter);
    return box;
}

void PowerTransducerView::addClearButton(QVBoxLayout *layout) {
    auto *row = new QHBoxLayout;
    CmdClear = new QPushButton("Wh Clear", this);
    CmdClear->setObjectName("CmdClear");
    CmdClear->setAutoDefault(false);
    row->addWidget(CmdClear);
    row->addStretch();
    layout->addLayout(row);
    connect(CmdClear, &QPushButton::clicked, this, &PowerTransducerView::CmdClear_Click);
}

int PowerTransducerView::itemOf(const XdField &field) const {
    return m_otherCurrent ? field.otherItem : field.item;
}

void PowerTransducerView::SetScaleMinMax(const QString &model) {
    ApplyModelRules(model);
    CardView::SetScaleMinMax(model);
}

void PowerTransducerView::ApplyModelRules(const QString &model) {
    m_otherCurrent = false;
    for (const QString &prefix : m_xd.otherCurrentModels)
        m_otherCurrent = m_otherCurrent || model.startsWith(prefix);
    for (QLabel *label : m_ratingColumnLabels)
        label->setText(m_otherCurrent ? "U/T" : "U");
    for (QLineEdit *box : m_secondaryCurrent)
        box->setVisible(!m_otherCurrent);
}

void PowerTransducerView::ViewRefresh() {
    for (const XdField &field : m_xd.fields)
        named(field.control)->setText(record().Param(field.cell));
}

// Every reply lands in its field and record field, an empty one too; a field the model has no
// item for keeps its text, which the record takes over.
void PowerTransducerView::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    OpenGroup("01");
    for (const XdField &field : m_xd.fields) {
        QLineEdit *box = named(field.control);
        if (const int item = itemOf(field)) box->setText(ReadValue("01", item));
        record().Param(field.cell) = box->text();
        if (field.progress) SetProgress(field.progress);
    }
    CloseProgress();
}

void PowerTransducerView::ViewDownload() {
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("01");
    OpenProgress(12, "Downloading");
    for (const XdField &field : m_xd.fields) {
        QLineEdit *box = named(field.control);
        QString &cell = record().Param(field.cell);
        if (!field.sent) {
            cell = box->text();
        } else if (const int item = itemOf(field)) {
            if (box->text().isEmpty()) {
                box->setText(cell);
            } else {
                WriteValue("01", item, box->text());
                cell = box->text();
            }
        }
        if (field.progress) SetProgress(field.progress);
    }
    CloseProgress();
}

void PowerTransducerView::ViewClear() {
    AddressCard();
    OpenGroup("01");
    WriteValue("01", 81, "1");
}

// All words first; a single missing one leaves every field as it was.
void PowerTransducerView::procCycDataRead() {
    AddressCard();
    QStringList replies;
    if (!ReadLiveValues(replies)) return;
    for (QLineEdit *box : LiveFieldsToEmpty()) {
        box->clear();
        box->repaint();
    }
    Clock::pause(m_spec.pauseMs);
    QStringList words;
    for (const QString &reply : replies)
        words << ValueText(reply);
    ShowLiveWords(words);
}

FrmXD10::FrmXD10(QWidget *parent)
    : PowerTransducerView(xdSpec("frmXD10", "XD10", 12), xd10Plan(), parent) {}

void FrmXD10::buildBody(QVBoxLayout *layout) {
    auto *top = new QHBoxLayout;
    QGridLayout *measure = frameGrid(this, top, "Measurement");
    columnCaptions(this, measure, {"value", "Bias", "Gain"});
    const QStringList quantities = {"W", "var", "cos", "Hz"};
    for (int k = 1; k <= 4; ++k) {
        measure->addWidget(ViewBuilders::caption(this, quantities.at(k - 1)), k, 0);
        addField(measure, k, 1, liveName(1, k), true, 7);
        addField(measure, k, 2, arrayName("txtBias", k));
        addField(measure, k, 3, arrayName("txtGain", k));
    }
    QGridLayout *energy = frameGrid(this, top, "Energy");
    columnCaptions(this, energy, {"Low", "High"}, 2);
    energy->addWidget(ViewBuilders::caption(this, "Whi"), 1, 0, 1, 2);
    energy->addWidget(ViewBuilders::caption(this, "Who"), 2, 0, 1, 2);
    energy->addWidget(ViewBuilders::caption(this, "varh"), 3, 0, 2, 1);
    energy->addWidget(ViewBuilders::caption(this, "LAG"), 3, 1);
    energy->addWidget(ViewBuilders::caption(this, "LEAD"), 4, 1);
    for (int row = 1; row <= 4; ++row) {
        addField(energy, row, 2, liveName(1, 2 * row + 3), true, 7);
        addField(energy, row, 3, liveName(1, 2 * row + 4), true, 7);
    }
    layout->addLayout(top);

    auto *middle = new QHBoxLayout;
    QGridLayout *scale = frameGrid(this, middle, "Energy scale");
    columnCaptions(this, scale, {"Unit", "Min.", "Max."});
    scale->addWidget(ViewBuilders::caption(this, "Wh"), 1, 0);
    addField(scale, 1, 1, "txtZScale(1)", false, 4);
    addField(scale, 1, 2, "txtZScale(2)");
    addField(scale, 1, 3, "txtFScale(2)");
    scale->addWidget(ViewBuilders::caption(this, "varh"), 2, 0);
    addField(scale, 2, 1, "txtZScale(4)", false, 4);
    addField(scale, 2, 2, "txtZScale(5)");
    addField(scale, 2, 3, "txtFScale(5)");
    QGridLayout *power = frameGrid(this, middle, "Power scale");
    columnCaptions(this, power, {"FS", "Unit"});
    power->addWidget(ViewBuilders::caption(this, "W / var"), 1, 0);
    addField(power, 1, 1, "txtZScale(3)");
    addField(power, 1, 2, "txtFScale(3)", false, 4);
    power->setRowStretch(2, 1);
    layout->addLayout(middle);

    auto *bottom = new QHBoxLayout;
    QGridLayout *ratings = frameGrid(this, bottom, "Transformers");
    columnCaptions(this, ratings, {"PRI", "U", "SEC"});
    m_ratingColumnLabels = {ratingColumnLabel(ratings)};
    ratings->addWidget(ViewBuilders::caption(this, "CT(A)"), 1, 0);
    addField(ratings, 1, 1, "txtCTScale1");
    addField(ratings, 1, 2, "txtCTScale2");
    m_secondaryCurrent = {addField(ratings, 1, 3, "txtCTScale3", true)};
    ratings->addWidget(ViewBuilders::caption(this, "VT(V)"), 2, 0);
    addField(ratings, 2, 1, "txtPTScale1");
    addField(ratings, 2, 2, "txtPTScale2");
    addField(ratings, 2, 3, "txtPTScale3", true);
    QGridLayout *dropOut = frameGrid(this, bottom, "Drop-Out");
    dropOut->addWidget(ViewBuilders::caption(this, "Drop-Out(%)"), 0, 0);
    addField(dropOut, 0, 1, "txtZeroScale", false, 5);
    dropOut->setRowStretch(1, 1);
    layout->addLayout(bottom);

    addClearButton(layout);
    layout->addStretch();
}

QList<QLineEdit *> FrmXD10::LiveFieldsToEmpty() const {
    QList<QLineEdit *> boxes;
    for (int n = 1; n <= 8; ++n)
        boxes << named(liveName(1, n));
    return boxes;
}

QList<LiveChannel> FrmXD10::LiveChannels() const {
    static const QStringList names = {"W",
                                      "var",
                                      "cos",
                                      "Hz",
                                      "Whi Low",
                                      "Whi High",
                                      "Who Low",
                                      "Who High",
                                      "varh LAG Low",
                                      "varh LAG High",
                                      "varh LEAD Low",
                                      "varh LEAD High"};
    QList<LiveChannel> channels;
    for (int n = 1; n <= names.size(); ++n)
        channels.append({names.at(n - 1), named(liveName(1, n))});
    return channels;
}

void FrmXD10::ShowLiveWords(const QStringList &words) {
    for (int n = 1; n <= words.size(); ++n)
        named(liveName(1, n))->setText(words.at(n - 1));
}

FrmXD40::FrmXD40(QWidget *parent)
    : PowerTransducerView(xdSpec("frmXD40", "XD40", 16), xd40Plan(), parent) {}

void FrmXD40::buildBody(QVBoxLayout *layout) {
    auto *top = new QHBoxLayout;
    QGridLayout *scaling = frameGrid(this, top, "Scaling");
    scaling->addWidget(ViewBuilders::caption(this, "Bias/Gain", true), 0, 1, 1, 2);
    columnCaptions(this, scaling, {"WhU", "WFS", "WU"}, 3);
    for (int e = 1; e <= 4; ++e) {
        scaling->addWidget(ViewBuilders::caption(this, QString::number(e)), e, 0);
        addField(scaling, e, 1, arrayName("txtBias", e));
        addField(scaling, e, 2, arrayName("txtGain", e));
        addField(scaling, e, 3, arrayName("txtUScale", e), false, 4);
        addField(scaling, e, 4, arrayName("txtZScale", e));
        addField(scaling, e, 5, arrayName("txtFScale", e), false, 4);
    }
    scaling->setRowStretch(5, 1);

    QGridLayout *ratings = frameGrid(this, top, "Transformers");
    columnCaptions(this, ratings, {"PRI", "U", "SEC"});
    m_ratingColumnLabels = {ratingColumnLabel(ratings)};
    for (int e = 1; e <= 4; ++e) {
        ratings->addWidget(ViewBuilders::caption(this, QStringLiteral("CT%1(A)").arg(e)), e, 0);
        addField(ratings, e, 1, arrayName("txtCTScale1", e), false, 6);
        addField(ratings, e, 2, arrayName("txtCTScale2", e), false, 6);
        m_secondaryCurrent << addField(ratings, e, 3, arrayName("txtCTScale3", e), false, 6);
    }
    ratings->addWidget(ViewBuilders::caption(this, "VT(V)"), 5, 0);
    addField(ratings, 5, 1, "txtPTScale1", false, 6);
    addField(ratings, 5, 2, "txtPTScale2", false, 6);
    addField(ratings, 5, 3, "txtPTScale3", false, 6);
    layout->addLayout(top);

    auto *middle = new QHBoxLayout;
    QGridLayout *live = frameGrid(this, middle, "Live");
    columnCaptions(this, live, {"1", "2", "3", "4"});
    for (int row = 1; row <= 4; ++row) {
        auto *label = ViewBuilders::caption(this, QString());
        label->setObjectName(QStringLiteral("lblParData%1").arg(row, 2, 10, QLatin1Char('0')));
        m_rowLabels << label;
        live->addWidget(label, row, 0);
        for (int e = 1; e <= 4; ++e)
            addField(live, row, e, liveName(row, e), true, 7);
    }
    // Rows a layout hides leave their room below the others, not between them.
    live->setRowStretch(5, 1);
    QGridLayout *dropOut = frameGrid(this, middle, "Drop-Out");
    dropOut->addWidget(ViewBuilders::caption(this, "Drop-Out(%)"), 0, 0);
    addField(dropOut, 0, 1, "txtZeroScale", false, 5);
    dropOut->setRowStretch(1, 1);
    middle->addStretch();
    layout->addLayout(middle);

    addClearButton(layout);
    layout->addStretch();
}

QLineEdit *FrmXD40::liveField(int row, int circuit) const {
    return named(liveName(row, circuit));
}

// The live rows take their captions and visibility from the word layout once, at entry; an
// unknown layout hides nothing and fills nothing.
void FrmXD40::ApplyModelRules(const QString &model) {
    PowerTransducerView::ApplyModelRules(model);
    const QChar code = model.size() >= 8 ? model.at(7) : QChar();
    const WordLayout *layout = nullptr;
    for (const WordLayout &candidate : kWordLayouts)
        if (code == QLatin1Char(candidate.code)) layout = &candidate;
    m_places.clear();
    for (int row = 1; row <= 4; ++row) {
        QLabel *label = m_rowLabels.at(row - 1);
        const char *caption = layout ? layout->labels.at(row - 1) : "";
        label->setText(caption ? QString::fromLatin1(caption) : QString());
        label->setVisible(caption != nullptr);
        for (int e = 1; e <= 4; ++e)
            liveField(row, e)->setVisible(!layout || layout->shown.at(row - 1));
    }
    if (layout) m_places = QList<int>(layout->places.begin(), layout->places.end());
}

QList<QLineEdit *> FrmXD40::LiveFieldsToEmpty() const {
    QList<QLineEdit *> boxes;
    for (int row = 1; row <= 4; ++row)
        for (int e = 1; e <= 4; ++e)
            boxes << liveField(row, e);
    return boxes;
}

QList<LiveChannel> FrmXD40::LiveChannels() const {
    QList<LiveChannel> channels;
    for (int row = 1; row <= 4; ++row) {
        const QString caption = m_rowLabels.at(row - 1)->text();
        for (int e = 1; e <= 4; ++e)
            if (!liveField(row, e)->isHidden())
                channels.append(
                    {QStringLiteral("%1 %2")
                         .arg(caption.isEmpty() ? QStringLiteral("Row %1").arg(row) : caption)
                         .arg(e),
                     liveField(row, e)});
    }
    return channels;
}

void FrmXD40::ShowLiveWords(const QStringList &words) {
    for (int n = 0; n < m_places.size() && n < words.size(); ++n)
        if (const int place = m_places.at(n))
            liveField(place / 10, place % 10)->setText(words.at(n));
}
