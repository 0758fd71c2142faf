#include "views/analog/voltage.h"

#include "link/clock.h"
#include "link/exchange.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"
#include "ui/viewbuilders.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QList<ParamSpec> standardChannel() {
    using namespace StandardParams;
    return {zeroScale(), fullScale(), zeroAdjust(), fullAdjust(), unusedFlag()};
}

ViewSpec voltageSpec(const QString &form, const QString &tag, int channels) {
    ViewSpec plan;
    plan.formName = form;
    plan.tag = tag;
    plan.channels = channels;
    plan.params = standardChannel();
    plan.acceptance = Acceptance::Syntax;
    plan.rangeCheck = true;
    return plan;
}

} // namespace

CardView *MakeFrmQF4() {
    ViewSpec plan = voltageSpec("frmQF4", "QF4", 4);
    plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch + 4; }};
    return new CardView(plan);
}

CardView *MakeFrmQF8() {
    ViewSpec plan = voltageSpec("frmQF8", "QF8", 8);
    plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch / 2 + 8; }};
    return new CardView(plan);
}

FrmQF16::FrmQF16(QWidget *parent)
    : CardView(
          [] {
              ViewSpec plan = voltageSpec("frmQF16", "QF16", kChannels);
              plan.acceptance = Acceptance::NotEmpty;
              plan.valueArray = true;
              plan.progress = {[](int ch) { return ch / 2; }, [](int ch) { return ch / 4 + 8; }};
              return plan;
          }(),
          parent) {}

void FrmQF16::buildBody(QVBoxLayout *layout) {
    auto *box = new QWidget(this);
    const QList<ViewBuilders::GridColumn> columns = {
        {"txtZScale", "Z-Scale", "", 8, false, false},
        {"txtFScale", "F-Scale", "", 8, false, false},
        {"txtEnable", "Unused", "", 2, false, false},
        {"txtParData", "Value", "", 9, true, false},
    };
    QGridLayout *grid = ViewBuilders::channelGrid(box, columns, kChannels);
    m_zeroHeader = qobject_cast<QLabel *>(grid->itemAtPosition(1, 1)->widget());
    m_fullHeader = qobject_cast<QLabel *>(grid->itemAtPosition(1, 2)->widget());
    m_zeroHeader->setObjectName("lblZeroHeader");
    m_fullHeader->setObjectName("lblFullHeader");
    changeButton = new QPushButton("Adjust", box);
    changeButton->setObjectName("changeButton");
    grid->addWidget(changeButton, 0, 1, 1, 2);
    grid->setColumnStretch(columns.size() + 1, 1);
    box->setLayout(grid);
    layout->addWidget(box);
    layout->addStretch();
    connect(changeButton, &QPushButton::clicked, this, &FrmQF16::changeButton_Click);

    for (int ch = 1; ch <= kChannels; ++ch) {
        for (const char *control : {"txtZScale", "txtFScale"}) {
            InstallSelectAllOnFocus(field(control, ch));
            InstallKeyFilter(field(control, ch), &FrmQF16::PageKeyFilter);
        }
        InstallSelectAllOnFocus(field("txtEnable", ch));
        InstallKeyFilter(field("txtEnable", ch), KeyFlag);
    }
}

// Whole numbers on the scale page, reals on the adjust page.
void FrmQF16::PageKeyFilter(QLineEdit *box, int &key) {
    QWidget *w = box;
    while (w && !qobject_cast<FrmQF16 *>(w))
        w = w->parentWidget();
    auto *view = qobject_cast<FrmQF16 *>(w);
    if (view && view->m_adjustPage)
        KeyReal(box, key);
    else
        KeyInt(box, key);
}

void FrmQF16::changeButton_Click() {
    m_adjustPage = !m_adjustPage;
    SwitchPage(true);
}

// Saving keeps what the user typed on the page being left; the new page shows its arrays.
void FrmQF16::SwitchPage(bool saving) {
    changeButton->setText(m_adjustPage ? "Scale" : "Adjust");
    m_zeroHeader->setText(m_adjustPage ? "Z-Adjust" : "Z-Scale");
    m_fullHeader->setText(m_adjustPage ? "F-Adjust" : "F-Scale");
    const int leftZero = m_adjustPage ? ScaleZero : AdjustZero;
    const int newZero = m_adjustPage ? AdjustZero : ScaleZero;
    for (int ch = 1; ch <= kChannels; ++ch) {
        if (saving) {
            m_arrays[leftZero][ch] = field("txtZScale", ch)->text();
            m_arrays[leftZero + 1][ch] = field("txtFScale", ch)->text();
        }
        field("txtZScale", ch)->setText(m_arrays[newZero][ch]);
        field("txtFScale", ch)->setText(m_arrays[newZero + 1][ch]);
    }
}

void FrmQF16::ViewRefresh() {
    m_adjustPage = false;
    for (int ch = 1; ch <= kChannels; ++ch) {
        for (int a = ScaleZero; a <= AdjustFull; ++a)
            m_arrays[a][ch] = record().Param((ch - 1) * 4 + a + 1);
        ShowFlag(field("txtEnable", ch), record().ChParam(ch));
    }
    SwitchPage(false);
}

void FrmQF16::ViewUpload() {
    CopyHeaderToRecord();
    OpenProgress(12, "Uploading");
    AddressCard();
    OpenGroup("01");
    const QList<ParamSpec> &params = m_spec.params;
    for (int ch = 1; ch <= kChannels; ++ch) {
        for (int a = ScaleZero; a <= AdjustFull; ++a) {
            m_arrays[a][ch] = ReadValue("01", params.at(a).item(ch));
            record().Param((ch - 1) * 4 + a + 1) = m_arrays[a][ch];
        }
        setPassProgress(0, ch);
    }
    SwitchPage(false);
    OpenGroup("02");
    for (int ch = 1; ch <= kChannels; ++ch) {
        ShowFlag(field("txtEnable", ch), ReadValue("02", ch + 41));
        record().ChParam(ch) = field("txtEnable", ch)->text();
        setPassProgress(1, ch);
    }
    CloseProgress();
}

bool FrmQF16::ValidateDownload() {
    for (int ch = 1; ch <= kChannels; ++ch) {
        for (int a = ScaleZero; a <= AdjustFull; ++a) {
            const QString &text = m_arrays[a][ch];
            bool ok = false;
            const double value = text.toDouble(&ok);
            if (text.isEmpty() || !ok) continue;
            const ParamSpec &param = m_spec.params.at(a);
            if (!InRange(value, *param.limit)) {
                People::message(param.rangeMessage, QString(), People::Icon::Information);
                return false;
            }
        }
    }
    return true;
}

void FrmQF16::ViewDownload() {
    const int visibleZero = m_adjustPage ? AdjustZero : ScaleZero;
    for (int ch = 1; ch <= kChannels; ++ch) {
        m_arrays[visibleZero][ch] = field("txtZScale", ch)->text();
        m_arrays[visibleZero + 1][ch] = field("txtFScale", ch)->text();
    }
    if (!ValidateDownload()) return;
    CopyHeaderToRecord();
    AddressCard();
    OpenGroup("01");
    OpenProgress(12, "Downloading");
    for (int ch = 1; ch <= kChannels; ++ch) {
        for (int a = ScaleZero; a <= AdjustFull; ++a) {
            QString &cell = record().Param((ch - 1) * 4 + a + 1);
            if (m_arrays[a][ch].isEmpty()) {
                m_arrays[a][ch] = cell;
                continue;
            }
            WriteValue("01", m_spec.params.at(a).item(ch), m_arrays[a][ch]);
            cell = m_arrays[a][ch];
        }
        setPassProgress(0, ch);
    }
    SwitchPage(false);
    OpenGroup("02");
    for (int ch = 1; ch <= kChannels; ++ch) {
        QLineEdit *flag = field("txtEnable", ch);
        if (flag->text().isEmpty()) {
            flag->setText(record().ChParam(ch));
        } else {
            ShowFlag(flag, ValueAfterColon(WriteValue("02", ch + 41, flag->text())));
            record().ChParam(ch) = flag->text();
        }
        setPassProgress(1, ch);
    }
    CloseProgress();
}

// The page not on show is in the arrays only.
void FrmQF16::TakeEditsFrom(const CardView &source) {
    CardView::TakeEditsFrom(source);
    if (const auto *view = qobject_cast<const FrmQF16 *>(&source)) {
        m_arrays = view->m_arrays;
        m_adjustPage = view->m_adjustPage;
        changeButton->setText(view->changeButton->text());
    }
}

// Channel by channel; a "TMO..." value leaves the box as it was.
void FrmQF16::procCycDataRead() {
    AddressCard();
    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString reply = ReadData(m_spec.retries, "00", QString::number(9 + ch));
        if (reply.isEmpty()) {
            LinkLostDuringCycle();
            return;
        }
        const QString value = DeleteDot(ValueAfterColon(reply));
        if (!value.startsWith(QLatin1String("TMO"))) {
            valueBox(ch)->clear();
            valueBox(ch)->repaint();
            valueBox(ch)->setText(value);
        }
        Clock::pause(m_spec.pauseMs);
    }
}
