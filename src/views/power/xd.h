#pragma once

#include "views/common/cardview.h"

#include <QList>
#include <QString>
#include <QStringList>

class QGridLayout;
class QLabel;

// One scaling field of a power transducer view, in the order Upload reads it. All items are in
// group 01; the texts pass through unchecked.
struct XdField {
    QString control;   // objectName: "txtBias(1)", "txtCTScale1"
    int item = 0;      // 0: the card has no such item
    int otherItem = 0; // the item on the models that keep the current ratings elsewhere
    int cell = 0;      // Param(cell)
    // False for the fields that only show what the card holds: a Download copies them into the
    // record and sends nothing.
    bool sent = true;
    int progress = 0; // the progress value once this field is done; 0 leaves it
};

// What tells the one-circuit view from the four-circuit one, as data.
struct XdPlan {
    // Models whose current ratings use otherItem and that have no secondary current.
    QStringList otherCurrentModels;
    QList<XdField> fields;
    int liveWords = 12; // group 00, items 10 upward
};

// The power transducer views: scaling in group 01, live power and energy words from group 00,
// and "Wh Clear", a third request of the tick after Upload.
class PowerTransducerView : public CardView {
    Q_OBJECT
public:
    QPushButton *CmdClear = nullptr;

    void SetScaleMinMax(const QString &model) override;
    // True while the model keeps its current ratings at the other items.
    bool otherCurrentItems() const { return m_otherCurrent; }
    // The field of a control by its full objectName.
    QLineEdit *named(const QString &objectName) const;

protected:
    PowerTransducerView(ViewSpec spec, XdPlan plan, QWidget *parent);

    void ViewUpload() override;
    void ViewDownload() override;
    void ViewClear() override;
    void procCycDataRead() override;
    void ViewRefresh() override;

    // The column of the voltage and current ratings says "U/T" or "U"; the secondary current
    // shows or hides with it.
    virtual void ApplyModelRules(const QString &model);
    // The fields the live pass empties before it writes the words.
    virtual QList<QLineEdit *> LiveFieldsToEmpty() const = 0;
    // Writes the words (DeleteDot of each value, item order) into their fields.
    virtual void ShowLiveWords(const QStringList &words) = 0;

    // The "Wh Clear" button, under the body.
    void addClearButton(QVBoxLayout *layout);
    // A text box named `name` at row, column of `grid`; locked ones show what the card holds.
    QLineEdit *addField(QGridLayout *grid, int row, int column, const QString &name,
                        bool locked = false, int chars = 8);

    int itemOf(const XdField &field) const;

    XdPlan m_xd;
    bool m_otherCurrent = false;
    QList<QLabel *> m_ratingColumnLabels;  // "U" or "U/T"
    QList<QLineEdit *> m_secondaryCurrent; // txtCTScale3
};

// XD1, XD1A, XD1B: one circuit.
class FrmXD10 : public PowerTransducerView {
    Q_OBJECT
public:
    explicit FrmXD10(QWidget *parent = nullptr);
    QList<LiveChannel> LiveChannels() const override;

protected:
    void buildBody(QVBoxLayout *layout) override;
    QList<QLineEdit *> LiveFieldsToEmpty() const override;
    void ShowLiveWords(const QStringList &words) override;
};

// XD4, XD4A, XD4B: four circuits, whose live words the eighth character of the model lays out.
class FrmXD40 : public PowerTransducerView {
    Q_OBJECT
public:
    explicit FrmXD40(QWidget *parent = nullptr);

    // The caption of live row 1..4 (lblParData01...), null when the layout has none.
    QLabel *liveRowLabel(int row) const { return m_rowLabels.value(row - 1); }
    // The live rows the model's layout shows, by their caption and circuit.
    QList<LiveChannel> LiveChannels() const override;

protected:
    void buildBody(QVBoxLayout *layout) override;
    void ApplyModelRules(const QString &model) override;
    QList<QLineEdit *> LiveFieldsToEmpty() const override;
    void ShowLiveWords(const QStringList &words) override;

private:
    QLineEdit *liveField(int row, int circuit) const;

    // Where word n (item 10 + n) goes: row * 10 + circuit, 0 for nowhere.
    QList<int> m_places;
    QList<QLabel *> m_rowLabels;
};
