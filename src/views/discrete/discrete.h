#pragma once

#include "rack/overviewio.h"
#include "views/common/cardview.h"

#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

// The discrete cards only watch their inputs and outputs: one row of data per view says how many
// channels it has, where it reads them, how a reply turns into states, and how the fields blink.

// The colours of a state field's text.
inline const QColor kStateOnColour{255, 0, 0};
inline const QColor kStateOffColour{0, 128, 0};

// "1" is on; any other text is off.
bool IsOnState(const QString &bit);
// Shows a state in a field: "ON" in red or "OFF" in green.
void ShowState(QLineEdit *box, const QString &bit);

struct DiscreteSpec {
    QString formName;
    QString tag;
    int channels = 8;
    QString group; // of the live items, 9 + ch
    // The text box arrays of a channel, e.g. {"txtDICh", "txtDOCh"}, with their captions.
    QStringList fields;
    QStringList captions;
    // Turns the value of a channel's reply into one state a field; an empty list leaves the
    // channel blank until the next pass.
    std::function<QStringList(const QString &value)> decode;
    // The blink: fields cleared before the read, fields cleared after it, then the pause.
    QStringList clearedBeforeRead;
    QStringList clearedAfterRead;
    int pauseMs = 0;
};

// The rows of the discrete views: frmQT8, frmQT16, frmQT32, frmQT64, frmXB16, frmXC8, frmQTC16.
const QList<DiscreteSpec> &DiscreteSpecs();
const DiscreteSpec *FindDiscreteSpec(const QString &formName);

// One class for all discrete views; it walks its row.
class DiscreteView : public CardView {
    Q_OBJECT
public:
    explicit DiscreteView(DiscreteSpec plan, QWidget *parent = nullptr);

    const DiscreteSpec &discreteSpec() const { return m_discrete; }
    void SetScaleMinMax(const QString &model) override;
    // Each state field, "ON" as 1 and "OFF" as 0.
    QList<LiveChannel> LiveChannels() const override;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void procCycDataRead() override;
    void ViewRefresh() override {}

private:
    void ClearFields(const QStringList &controls, int ch);
    DiscreteSpec m_discrete;
};

// How a card with relays (or inputs and outputs together) draws its overview row: which lamps
// its bytes go to, and how its overview word splits into bytes.
struct OverviewBytesSpec {
    QString item;                                      // read in group "00"
    std::function<QStringList(const QString &)> bytes; // empty: the row stays neutral
    QList<int> firstLamps;                             // lamp of bit 0 of each byte
};

// The discrete views whose bits do not fit the plain lamp row: frmXC8 and frmQTC16.
class DiscreteIoView : public DiscreteView, public OverviewRowIO {
    Q_OBJECT
public:
    DiscreteIoView(DiscreteSpec plan, OverviewBytesSpec overview, QWidget *parent = nullptr);

    void ShowChDataIO(int slot) override;
    bool setOverViewDataIO(int slot) override;

private:
    OverviewBytesSpec m_overview;
};

// The bits of a hexadecimal byte text, bit 0 first; characters that are no upper-case hex
// digit count as 0.
QString ByteBitsLowFirst(const QString &byteText);

CardView *MakeDiscreteView(const QString &formName);
