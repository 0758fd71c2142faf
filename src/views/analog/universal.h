#pragma once

#include "views/common/cardview.h"

#include <array>
#include <functional>

class QCheckBox;
class QComboBox;

// The universal input card XE4: each channel takes a voltage, a thermocouple, a resistance
// thermometer or a potentiometer, picked from a list whose rows depend on the card's build. Every
// channel parameter travels with a channel prefix ("01" to "04") in the data, the card's replies
// come by WriteDataChk, every exchange may be tried ten more times, and a Download writes every
// field. The number fields judge each change as it is typed and undo what breaks their limits.
class FrmXE4 : public CardView {
    Q_OBJECT
public:
    static constexpr int kChannels = 4;

    explicit FrmXE4(QWidget *parent = nullptr);

    void OpenView(const QString &model) override;
    // Tells the build, fills the lists for it and starts the cycle.
    void XE4_Init(const QString &model);

    // Set while the view is shown for a card that answers "VX_XE4/A" at item 90.
    bool IsBuildA = false;

    QComboBox *List_TempUnit = nullptr;
    QComboBox *List_ADCSpeed = nullptr;
    QCheckBox *chkLimit = nullptr;
    // Indexed by channel, 1 to 4.
    std::array<QComboBox *, kChannels + 1> List_InputType{};
    std::array<QComboBox *, kChannels + 1> List_ChEnable{};
    std::array<QComboBox *, kChannels + 1> List_BurnOut{};
    std::array<QCheckBox *, kChannels + 1> ChkCJC{};

public slots:
    void List_ChEnable_Click(int ch);
    void List_InputType_Click(int ch);

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ViewUpload() override;
    void ViewDownload() override;
    void procCycDataRead() override;
    void ViewRefresh() override;
    void TakeEditsFrom(const CardView &source) override;
    QString CellName(Cell kind, int index) const override;

private:
    static constexpr int kNumberFields = 6;

    void BuildLists();
    QString ReadItem(const QString &item, const QString &data = QString());
    void WriteItem(const QString &item, const QString &data);
    // Shows and hides burnout and CJC by the channel's input type; after an Upload the CJC of
    // "B(RH)" stays hidden on the standard build.
    void ApplyVisibility(int ch, bool afterUpload);
    void NumberChanged(int field, int ch);
    // The texts of the channel's lists and its CJC switch to their cells.
    void ListsToRecord(int ch);
    void NumberRuns(const std::function<QString(int field, int ch)> &move);
    void EndRoundLost();
    QWidget *m_adcSpeedBox = nullptr;
    // The text each number field last accepted, by field and channel.
    std::array<std::array<QString, kChannels + 1>, kNumberFields> m_prevText{};
    bool m_listsBuilt = false;
    bool m_applyingRule = false;
};

// The rule of a universal input number field at each change of its text: the text the field
// ends with and the text it has accepted last. `control` is one of txtZScale, txtFScale,
// txtBias, txtGain, txtZBase, txtFBase.
struct UniversalEntry {
    QString text;
    QString prevText;
};
UniversalEntry UniversalNumberRule(const QString &control, const QString &text,
                                   const QString &prevText);
