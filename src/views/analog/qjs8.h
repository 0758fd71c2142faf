#pragma once

#include "views/common/cardview.h"

// The eight-channel output card QJS8 (and every model beginning with "QJS"): the plain signal
// view with one more column, the output type of each channel, which the card tells and the user
// cannot change. Fields are judged by their syntax, not by a range.
class FrmQJS8 : public CardView {
    Q_OBJECT
public:
    explicit FrmQJS8(QWidget *parent = nullptr);

    static constexpr int kChannels = 8;
    // The two output types; channels 5 to 8 are always the first.
    static inline const QString kVoltageOutput = QStringLiteral("0-10V DC");
    static inline const QString kCurrentOutput = QStringLiteral("4-20mA");

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewRefresh() override;
    void UploadTail() override;
    void ViewDownload() override;

private:
    QLineEdit *outPutType(int ch) const;
    QString &typeCell(int ch) const;
};
