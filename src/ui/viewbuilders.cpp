#include "ui/viewbuilders.h"

#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

namespace ViewBuilders {

QString arrayName(const QString &control, int index) {
    return QStringLiteral("%1(%2)").arg(control).arg(index);
}

QString columnName(const GridColumn &column, int ch) {
    return column.twoDigitNames
               ? QStringLiteral("%1%2").arg(column.control).arg(ch, 2, 10, QLatin1Char('0'))
               : arrayName(column.control, ch);
}

QLineEdit *field(QWidget *parent, const QString &objectName, int chars) {
    auto *box = new QLineEdit(parent);
    box->setObjectName(objectName);
    const QFontMetrics metrics(box->font());
    box->setFixedWidth(metrics.horizontalAdvance(QString(chars, QLatin1Char('0'))) + 14);
    box->setAlignment(Qt::AlignRight);
    return box;
}

QLineEdit *valueField(QWidget *parent, const QString &objectName, int chars) {
    QLineEdit *box = field(parent, objectName, chars);
    box->setReadOnly(true);
    box->setFocusPolicy(Qt::NoFocus);
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    box->setPalette(palette);
    return box;
}

QLabel *caption(QWidget *parent, const QString &text, bool centred) {
    auto *label = new QLabel(text, parent);
    if (centred) label->setAlignment(Qt::AlignCenter);
    return label;
}

QGridLayout *channelGrid(QWidget *parent, const QList<GridColumn> &columns, int channels,
                         int firstChannel) {
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(3);
    // Group captions span the run of columns that share them.
    for (int c = 0; c < columns.size();) {
        int span = 1;
        while (c + span < columns.size() && !columns[c].groupCaption.isEmpty() &&
               columns[c + span].groupCaption == columns[c].groupCaption)
            ++span;
        if (!columns[c].groupCaption.isEmpty())
            grid->addWidget(caption(parent, columns[c].groupCaption, true), 0, c + 1, 1, span);
        c += span;
    }
    for (int c = 0; c < columns.size(); ++c)
        grid->addWidget(caption(parent, columns[c].caption, true), 1, c + 1);
    for (int ch = firstChannel; ch < firstChannel + channels; ++ch) {
        const int row = ch - firstChannel + 2;
        grid->addWidget(caption(parent, QStringLiteral("CH%1").arg(ch)), row, 0);
        for (int c = 0; c < columns.size(); ++c) {
            const GridColumn &column = columns[c];
            if (column.channels > 0 && ch > column.channels) continue;
            const QString name = columnName(column, ch);
            QLineEdit *box = column.readOnly ? valueField(parent, name, column.chars)
                                             : field(parent, name, column.chars);
            grid->addWidget(box, row, c + 1, Qt::AlignHCenter);
        }
    }
    return grid;
}

} // namespace ViewBuilders
