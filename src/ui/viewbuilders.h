#pragma once

#include <QString>
#include <QStringList>

class QGridLayout;
class QLabel;
class QLineEdit;
class QWidget;

// Small builders shared by all forms, so every view looks and behaves alike.
namespace ViewBuilders {

// The objectName of element `index` of a control array: "txtZScale(3)".
QString arrayName(const QString &control, int index);

// A text box with its objectName and a width that fits `chars` characters.
QLineEdit *field(QWidget *parent, const QString &objectName, int chars = 8);
// The same, read-only and grey: for values the card reports.
QLineEdit *valueField(QWidget *parent, const QString &objectName, int chars = 8);
// A caption label, centred when it heads a column.
QLabel *caption(QWidget *parent, const QString &text, bool centred = false);

// One column of a channel grid: the text box array `control`, under a caption that may belong
// to a group of columns ("Scale" over "Zero" and "Full").
struct GridColumn {
    QString control;
    QString caption;
    QString groupCaption;
    int chars = 8;
    bool readOnly = false;
    // Some forms number a row of single boxes instead ("txtParData01"): name them that way.
    bool twoDigitNames = false;
    // Only the first `channels` channels have a box in this column; 0: all of them.
    int channels = 0;
};

// The name of the box of `column` for channel `ch`.
QString columnName(const GridColumn &column, int ch);

// Lays out `channels` rows of text boxes, one column each, with "CH1"... at the left and the
// captions above. Returns the grid; its boxes are named arrayName(column.control, ch).
QGridLayout *channelGrid(QWidget *parent, const QList<GridColumn> &columns, int channels,
                         int firstChannel = 1);

} // namespace ViewBuilders
