#pragma once

#include "rack/textroutines.h"
#include "views/common/cardview.h"

#include <QHash>
#include <QString>

class QGridLayout;

// What an editable field of the calorie view accepts while the user types: at most `decimals`
// digits behind the point, and the value times ten to the power of the decimals, rounded, within
// [minimum, maximum].
struct TypingRange {
    int decimals = 2;
    qint64 minimum = 0;
    qint64 maximum = 0;
};

// The text a field keeps after a change from `previous` to `text`: the new text, a completed
// one ("-." becomes "-0.", "." becomes "0."), or `previous` when the new text is refused.
QString CheckedFieldText(const QString &text, const QString &previous, const TypingRange &range);

// The calorie meter card QY2: two channels of flow and temperatures. Every editable field is
// checked while the user types; "Preset" sets the eight totals; Download waits until there is
// something to send: a project file or an Upload.
class FrmQY2 : public CardView {
    Q_OBJECT
public:
    explicit FrmQY2(QWidget *parent = nullptr);

    // A field by its full objectName ("txtFlowVal1", "txtTotalCCal2p", "txtGain(2)").
    QLineEdit *named(const QString &objectName) const;
    // The numbers among the live fields, both channels.
    QList<LiveChannel> LiveChannels() const override;

    QPushButton *cmdPreset = nullptr;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewUpload() override;
    void ViewDownload() override;
    void ViewPreset() override;
    void procCycDataRead() override;
    void ViewRefresh() override;
    QString CellName(Cell kind, int index) const override;

private:
    // An editable field with its key filter and its check; no range: the flag's check.
    QLineEdit *checkedField(const QString &name, KeyFilter keys, std::function<TypingRange()> range,
                            int chars = 8);
    // The field check, hung on the change of a field's text.
    void watch(QLineEdit *box, std::function<TypingRange()> range);
    void watchEnable(QLineEdit *box);
    void keepOrRevert(QLineEdit *box, const QString &checked);
    // A calorie preset's range by the unit its channel shows now; none for an unknown unit.
    std::optional<TypingRange> calorieRange(int channel) const;
    static void KeyCaloriePreset(QLineEdit *box, int &key);

    void buildSettings(QGridLayout *grid);
    void buildLive(QGridLayout *grid);
    void buildCommon(QGridLayout *grid);

    QHash<QLineEdit *, QString> m_previous;
};
