#pragma once

#include "rack/cardtable.h"
#include "rack/limits.h"
#include "rack/textroutines.h"
#include "ui/livefeed.h"
#include "ui/viewbuilders.h"
#include "ui/viewregistry.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>
#include <optional>

class QGroupBox;
class QHBoxLayout;
class QLineEdit;
class QPushButton;
class QTimer;
class QVBoxLayout;

// How a field's text is judged and typed.
enum class FieldKind { Int, Real, Flag };

// What a Download asks of a field before it writes it.
enum class Acceptance {
    Syntax,   // IsIntText for whole numbers, IsRealText for reals, exactly "1" or "0" for flags
    NotEmpty, // any text but the empty one
    Always,   // every field is written
};

// Where a parameter lives in the card record.
enum class Cell { Param, ChParam };

// One parameter of a channel: its field, its place on the wire and in the record.
struct ParamSpec {
    QString control;      // text box array, e.g. "txtZScale"
    QString groupCaption; // caption over a run of columns, e.g. "Scale"
    QString caption;      // column caption, e.g. "Zero"
    QString group;        // wire group, e.g. "01"
    std::function<int(int ch)> item;
    Cell cellKind = Cell::Param;
    std::function<int(int ch)> cell; // index into Param or ChParam
    FieldKind kind = FieldKind::Int;
    // Inclusive range tested before a Download, with the message for a failure.
    std::optional<Limit> limit;
    QString rangeMessage;
    bool selectOnFocus = true; // the field selects its whole text when it gets the focus
    // The field exists on the first `channels` channels only; 0: on all of them.
    int channels = 0;
    // One field for the whole card, named `control` without an index, walked with channel 1.
    // The default body leaves it out: the view places it.
    bool perCard = false;
    // Walked in a run of its own after the parameters before it, in a group that is already
    // open (the flags after the bases of group 02).
    bool ownPass = false;
    // What a Download asks of this field, where it differs from the view's rule.
    std::optional<Acceptance> acceptance = std::nullopt;
    // The key filter where it differs from the kind's; a null filter is none.
    std::optional<KeyFilter> keyFilter = std::nullopt;
};

// One run of a worker over the channels: the parameters it moves for each channel, in order, all
// of one group.
struct PassSpec {
    QString group;
    QList<ParamSpec> params;
    // Writes the group's item 01 first; a later run in a group already open need not.
    bool opensGroup = true;
    std::function<int(int ch)> progress; // the bar after channel ch; none: it stays
    int channels = 0;                    // channels walked; 0: all of the view's
};

// A card family's view, declared as data: the common class walks it.
struct ViewSpec {
    QString formName;
    QString tag;
    int channels = 4;
    // Parameters in the order a channel is read and written; all of one group form one pass.
    QList<ParamSpec> params;
    Acceptance acceptance = Acceptance::Syntax;
    bool rangeCheck = false;
    bool keyFilters = true;
    // Live values: group 00, items firstValueItem upward, one a channel.
    int firstValueItem = 10;
    QString valueControl = QStringLiteral("txtParData");
    bool valueArray = false; // txtParData(ch) rather than txtParData01
    int pauseMs = 10;
    bool keepDecimalPoint = false;
    // Progress after channel ch of pass 1, 2, ... (maximum 12).
    QList<std::function<int(int ch)>> progress;
    int tickMs = 500;
    int retries = 3;
    // The header frame's objectName; some families call it "fraShowModel".
    QString headerFrame = QStringLiteral("fraSetModel");
    // Views that only watch their card have neither Upload nor Download (cmdUp, cmdDown null).
    bool hasUpDown = true;
    // The runs of Upload and Download. Empty: one run a group, in order of first appearance,
    // each opening its group, with the progress steps above.
    QList<PassSpec> passPlan;
    // Read-only columns after the value column, which the family fills (a percentage, a type).
    QList<ViewBuilders::GridColumn> extraColumns;
    // A caption over the values and the extra columns after them, where they belong together.
    QString valueGroupCaption;
    // A cycle that loses the line also stops the view's timer.
    bool stopOnLinkLoss = false;
    // An empty flag field is refilled from ChParam as plain text rather than through ShowFlag.
    bool flagRefillPlain = false;
    // Entering reads the version first and starts the cycle last.
    bool versionBeforeCycle = false;
    // The captions of the header's model, slot and version boxes.
    QStringList headerCaptions = {"Type", "Slot", "Version"};
};

// The standard channel layout: four Param cells and one flag a channel.
namespace StandardParams {
ParamSpec zeroScale();
ParamSpec fullScale();
ParamSpec zeroAdjust();
ParamSpec fullAdjust();
ParamSpec unusedFlag();
} // namespace StandardParams

// The common card view: entering, the WaitForTimer tick with its pending flags, the standard
// Upload and Download, the cyclic read and the field behaviour. Families give a ViewSpec and
// override only what they do differently.
class CardView : public QWidget, public OpenableView {
    Q_OBJECT
public:
    explicit CardView(ViewSpec plan, QWidget *parent = nullptr);

    // The show routine: fills the header, shows the view, starts the cycle, reads the version.
    void OpenView(const QString &model) override;
    // Builds the family's fields; done once, before the view is first shown.
    void build();
    virtual void SetScaleMinMax(const QString &model);

    const ViewSpec &plan() const { return m_spec; }
    // The field of `control` for channel `ch`, by its objectName.
    QLineEdit *field(const QString &control, int ch) const;
    // The field of a parameter for channel `ch` (the card's own field for a per-card one).
    QLineEdit *paramField(const ParamSpec &param, int ch) const;
    QLineEdit *valueBox(int ch) const;

    // The live values the view shows, for the tools that watch them (the trend plot): by default
    // the value boxes, "Ch 1" upward. A family that shows its values elsewhere lists its own.
    virtual QList<LiveChannel> LiveChannels() const;
    // Told after each cyclic read: the boxes hold the new values, or the read got no answer.
    LiveFeed *liveFeed;

    bool DownloadPending = false;
    bool UploadPending = false;
    bool CycleActive = false;
    // The third requests of the views that have them (Clear, Preset): after Download and
    // Upload, before the live read, one request a tick.
    bool ClearPending = false;
    bool PresetPending = false;
    // The compare of the card with what a Download would write waits for the tick as the
    // workers do, after them and before the live read.
    bool ComparePending = false;

    QGroupBox *fraSetModel;
    QLineEdit *txtCardType;
    QLineEdit *txtCardNo;
    QLineEdit *txtVerNo;
    QPushButton *cmdUp;
    QPushButton *cmdDown;
    // The tools' commands in the header: the trend plot of the live values (shown where there are
    // any), and the compare, beside Download and enabled with it.
    QPushButton *cmdTrend;
    QPushButton *cmdCompare;
    QTimer *WaitForTimer;

public slots:
    void cmdUp_Click();
    void cmdDown_Click();
    // What a view's Clear and Preset buttons do: the flag, and the next tick soon.
    void CmdClear_Click();
    void cmdPreset_Click();
    void cmdTrend_Click();
    void cmdCompare_Click();
    void WaitForTimer_Timer();

protected:
    virtual void ViewTick();
    virtual void ViewUpload();
    virtual void ViewDownload();
    virtual void ViewClear() {}
    virtual void ViewPreset() {}
    // Reads the card into a scratch copy of the view and shows it beside what a Download would
    // write; writes nothing, and leaves the fields and the record as they were.
    virtual void ViewCompare();
    // Puts what the user has in `source`, a view of the same form, into this one: the controls
    // by name, and what a family keeps beside them (a page not on show). The compare's scratch
    // copy takes the user's edits this way, so that the user's own view is never worked on.
    virtual void TakeEditsFrom(const CardView &source);
    // The parameter a record cell holds, as the compare names it; empty where the plan does not
    // know it (the compare then names it by the field that shows it).
    virtual QString CellName(Cell kind, int index) const;
    // The parameter of the plan whose cell it is, and its channel; null for none.
    const ParamSpec *ParamOfCell(Cell kind, int index, int &ch) const;
    virtual void procCycDataRead();
    virtual void ViewRefresh();
    // The range check before a Download; shows its message and returns false on failure.
    virtual bool ValidateDownload();
    virtual bool Acceptable(const ParamSpec &param, const QString &text) const;
    // Whether the timer is armed again after a tick; a view with a dialog of its own may hold
    // its cycle while the dialog is up.
    virtual bool KeepTicking() const { return CycleActive; }

    // Builds the body under the header; the default is one channel grid of all parameters
    // and the value boxes.
    virtual void buildBody(QVBoxLayout *layout);
    // Select-all and the key filters on every parameter field, as the plan says; a body of the
    // family's own calls it once its fields exist.
    void InstallFieldBehaviour();
    // A command or check box of the family's own, at the end of the header's commands.
    void addHeaderTool(QWidget *tool);

    CardRecord &record() const { return CardTable(CardNo); }
    virtual QString &cellOf(const ParamSpec &param, int ch) const;
    // The group a plan's group is read and written in; some families pick it by model.
    virtual QString wireGroup(const QString &group) const { return group; }
    static bool hasChannel(const ParamSpec &param, int ch);
    int channelsOf(const PassSpec &pass) const {
        return pass.channels > 0 ? pass.channels : m_spec.channels;
    }
    // Groups of the runs, in order: the passes of Upload and Download.
    QStringList passes() const;
    void setPassProgress(int pass, int ch) const;
    // The runs of Upload and Download: the plan's, or else one a group in order of first
    // appearance, and one more for each parameter that asks for a run of its own. A family
    // whose runs depend on the model overrides it.
    virtual QList<PassSpec> workerPasses() const;
    // The ends of an Upload and a Download, before the progress dialog closes: what a family
    // adds.
    virtual void UploadTail() {}
    virtual void DownloadTail() {}

    void AddressCard();
    void OpenGroup(const QString &group);
    QString ReadValue(const QString &group, int item);
    QString WriteValue(const QString &group, int item, const QString &data);
    // Reads the live values; returns false when a reply was empty (already handled).
    bool ReadLiveValues(QStringList &values);
    void LinkLostDuringCycle();
    // Clears each value box and repaints it at once, so the blink shows.
    void ClearValueBoxes();
    void CopyHeaderToRecord();
    void ShowParam(const ParamSpec &param, int ch, const QString &text);
    QString ValueText(const QString &reply) const;

    ViewSpec m_spec;

private:
    // The cyclic read, with word to the tools that watch it.
    void ReadLive();
    // A header whose commands would squeeze the type and version boxes puts its commands on a
    // line of their own under them.
    void fitHeader();

    bool m_built = false;
    QHBoxLayout *m_headerTop;   // type, slot, version, then the commands where they fit
    QHBoxLayout *m_headerTools; // the commands where they do not
    QList<QWidget *> m_headerToolWidgets;
    friend class CardCompare;
};
