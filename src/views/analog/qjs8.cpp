#include "views/analog/qjs8.h"

#include "link/exchange.h"
#include "rack/textroutines.h"
#include "views/analog/analogparams.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

using namespace AnalogParams;
using namespace StandardParams;

namespace {

// The card tells the type of channels 1 to 4 at group 00 items 55 to 58.
constexpr int kTypedChannels = 4;
constexpr int kFirstTypeItem = 55;

ParamSpec jointCaption(ParamSpec param, const QString &caption) {
    param.caption = caption;
    return param;
}

} // namespace

FrmQJS8::FrmQJS8(QWidget *parent)
    : CardView(
          [] {
              const auto cell = [](int k) { return [k](int ch) { return (ch - 1) * 5 + k; }; };
              ViewSpec plan;
              plan.formName = "frmQJS8";
              plan.tag = "QJS";
              plan.channels = kChannels;
              plan.params = {jointCaption(atCell(zeroScale(), cell(1)), "Zero/Full"),
                             jointCaption(atCell(fullScale(), cell(2)), ""),
                             jointCaption(atCell(zeroAdjust(), cell(3)), "Zero/Full"),
                             jointCaption(atCell(fullAdjust(), cell(4)), ""), unusedFlag()};
              plan.acceptance = Acceptance::Syntax;
              plan.extraColumns = {{"outPutType", "", "", 9, true, false}};
              plan.progress = {[](int ch) { return ch; }, [](int ch) { return ch / 2 + 8; }};
              return plan;
          }(),
          parent) {}

// "Zero/Full" stands under both columns of its group.
void FrmQJS8::buildBody(QVBoxLayout *layout) {
    CardView::buildBody(layout);
    for (QLabel *label : findChildren<QLabel *>()) {
        auto *grid = label->parentWidget()
                         ? qobject_cast<QGridLayout *>(label->parentWidget()->layout())
                         : nullptr;
        if (label->text() != QLatin1String("Zero/Full") || !grid) continue;
        int row = 0, col = 0, rows = 0, cols = 0;
        grid->getItemPosition(grid->indexOf(label), &row, &col, &rows, &cols);
        grid->removeWidget(label);
        grid->addWidget(label, row, col, 1, 2);
    }
}

QLineEdit *FrmQJS8::outPutType(int ch) const {
    return field("outPutType", ch);
}

QString &FrmQJS8::typeCell(int ch) const {
    return record().Param((ch - 1) * 5 + 5);
}

void FrmQJS8::ViewRefresh() {
    CardView::ViewRefresh();
    for (int ch = 1; ch <= kChannels; ++ch)
        outPutType(ch)->setText(typeCell(ch));
}

// A reply beginning "QJ" is a voltage output; anything else, an empty reply too, a current one.
void FrmQJS8::UploadTail() {
    for (int ch = 1; ch <= kChannels; ++ch) {
        QString type = kVoltageOutput;
        if (ch <= kTypedChannels) {
            const QString value = ReadValue("00", kFirstTypeItem + ch - 1);
            if (!value.startsWith(QLatin1String("QJ"))) type = kCurrentOutput;
        }
        outPutType(ch)->setText(type);
        typeCell(ch) = type;
    }
}

// The type is never sent; the record keeps it only when it is one of the two.
void FrmQJS8::ViewDownload() {
    CardView::ViewDownload();
    for (int ch = 1; ch <= kChannels; ++ch) {
        const QString type = outPutType(ch)->text();
        typeCell(ch) = type == kVoltageOutput || type == kCurrentOutput ? type : QString();
    }
}
