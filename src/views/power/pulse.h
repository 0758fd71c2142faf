#pragma once

#include "rack/overviewio.h"
#include "views/common/cardview.h"

class QCheckBox;
class QGroupBox;
class QPushButton;

// A live word of a pulse card: group 00 item and the box that shows it.
struct LiveWord {
    int item;
    QString box; // objectName
};

// One line of a channel frame: a caption and the boxes beside it.
struct FrameLine {
    FrameLine(QString caption, QStringList controls, int chars = 7, QString hint = {})
        : caption(std::move(caption)), controls(std::move(controls)), chars(chars),
          hint(std::move(hint)) {}
    QString caption;
    QStringList controls; // names with %1 for the channel: "txtDropout(%1)", "txtParData0%1"
    int chars;
    QString hint; // a note after the boxes, e.g. "0:UP/1:DOWN"
};

// What a pulse card's view is made of beyond the common view's data.
struct PulseSpec {
    ViewSpec view; // params: the channel fields in the order Upload reads them, all in group 01
    // Fields a card has once, read before the channels; their controls carry no index.
    QList<ParamSpec> common;
    // Fields Download copies to the record without sending them to the card.
    QStringList storedOnly;
    // Fields the user cannot change.
    QStringList locked;
    // Live words in the order they are read.
    QList<LiveWord> live;
    // The live boxes are drawn empty before they take the new words.
    bool redraw = true;
    // G02 I01 D1 closes an Upload or a Download.
    bool commitUpload = false;
    bool commitDownload = false;
    // Channel frames "Ch. 1"... side by side in rows of `framesPerRow`, each with these lines;
    // empty: the view lays itself out.
    QList<FrameLine> frameLines;
    int framesPerRow = 2;
    // Fields select their whole text when they get the focus.
    bool selectAll = true;
};

// The common ground of the pulse cards: their own item maps walked as data, fields that travel as
// typed, the Clear and Preset requests of the tick, and the live words.
class PulseView : public CardView {
    Q_OBJECT
public:
    explicit PulseView(PulseSpec plan, QWidget *parent = nullptr);

    QPushButton *CmdClear = nullptr;
    QPushButton *cmdPreset = nullptr;

    // Pulse cards take their items as two digits: "07", "10".
    static QString ItemText(int item);

    // A live box by its objectName.
    QLineEdit *liveBox(const QString &name) const;
    // A field of a channel (ch >= 1) or one of the common fields (ch = 0).
    QLineEdit *box(const ParamSpec &param, int ch) const;
    // The live words, named by the line of the channel frame that shows them.
    QList<LiveChannel> LiveChannels() const override;

protected:
    void ViewUpload() override;
    void ViewDownload() override;
    void procCycDataRead() override;
    void ViewRefresh() override;
    void buildBody(QVBoxLayout *layout) override;
    QString CellName(Cell kind, int index) const override;

    // False for a field the card's version does not have: Upload shows "0" and Download
    // empties its cell, neither with an exchange.
    virtual bool Exchanged(const ParamSpec &) const { return true; }
    // A field that failed its acceptance on Download; the default refills it from the record.
    virtual void Refused(const ParamSpec &param, int ch);

    // A read (the reply as it came) and a write of an item of `group`.
    QString ReadItem(const QString &group, int item);
    QString WriteItem(const QString &group, int item, const QString &data);
    // Puts a command button into the header, after Upload and Download.
    QPushButton *addCommand(const QString &name, const QString &caption,
                            void (PulseView::*click)());
    // The counters' Clear of the cards that take it in group 01: item 09, data 1.
    void ClearByItem9();
    // Reads the live words and shows them; false when a reply was empty (already handled).
    bool ReadLiveWords();
    // The channel frames of frameLines, in `layout`; each frame's layout is a QVBoxLayout.
    QList<QGroupBox *> buildChannelFrames(QVBoxLayout *layout);
    // Focus behaviour and locks of every field.
    void setUpFields();

    const PulseSpec &pulse() const { return m_pulse; }

private:
    void uploadField(const ParamSpec &param, int ch);
    void downloadField(const ParamSpec &param, int ch);

    PulseSpec m_pulse;
};

// The plain pulse input with frequency: the common view, declared as data.
CardView *MakeFrmQZ4();

// Four 32-bit counters. The version decides which fields the card has; a Download may end with
// a Clear of the counters.
class FrmQZ4A : public PulseView {
    Q_OBJECT
public:
    explicit FrmQZ4A(QWidget *parent = nullptr);

    void OpenView(const QString &model) override;
    void SetScaleMinMax(const QString &model) override;

    QCheckBox *CheckClear = nullptr;

protected:
    void ViewRefresh() override;
    void ViewDownload() override;
    void ViewClear() override;
    bool Exchanged(const ParamSpec &param) const override;

private:
    // The version as a number: DeleteDot of the text, read as far as it is a number.
    double versionNumber() const;
    void applyVersionRules();
};

// What differs between the counter cards with a Max and a Preset for each row.
struct CounterSpec {
    double maxFloor;       // the smallest Max a Download sends
    double maxCeiling;     // the largest Max and Preset
    QString presetOpening; // the data of G02 I01 before a Preset
    bool emptyRefused;     // a refused field is emptied (else refilled from the record)
    bool warnBeforeUpload; // a row without its record stops the Preset with a message
    int keyLimit;          // characters of Max and Preset when keys are filtered; 0: no filters
};

// Eight or sixteen counters in rows, with a Max each, a Preset that sets a counter and a Clear
// that zeroes them all.
class CounterView : public PulseView {
    Q_OBJECT
public:
    CounterView(PulseSpec plan, CounterSpec counter, QWidget *parent = nullptr);

    void SetScaleMinMax(const QString &model) override;
    QLineEdit *presetBox(int n) const;

protected:
    void buildBody(QVBoxLayout *layout) override;
    bool Acceptable(const ParamSpec &param, const QString &text) const override;
    void Refused(const ParamSpec &param, int ch) override;
    void ViewClear() override;
    void ViewPreset() override;

private:
    bool presetPasses(int n, const QString &text) const;
    QString &storedMax(int n) const;

    CounterSpec m_counter;
};

// Eight counters; the overview's row of the card shows the first four.
class FrmQZ8 : public CounterView, public OverviewRowIO {
    Q_OBJECT
public:
    explicit FrmQZ8(QWidget *parent = nullptr);

    void ShowChDataIO(int slot) override;
    bool setOverViewDataIO(int slot) override;
};

CardView *MakeFrmQZ16();

// A field of group 01 that travels as typed. Channel e has it at item itemStep * e + itemOffset
// and in Param(cellStep * (e - 1) + firstCell).
ParamSpec PulseField(const char *control, int itemStep, int itemOffset, int cellStep, int firstCell,
                     const char *caption = "");

// The frame of a pulse card's view: its form, tag, channels and channel fields. The fields travel
// as typed: Download sends every field that is not empty and has no key filters.
PulseSpec MakePulseSpec(const char *form, const char *tag, int channels, QList<ParamSpec> params);

// The number a text stands for, read as far as it is one ("12.5x" is 12.5, "x" is 0).
double LeadingNumber(const QString &text);
