#pragma once

#include "views/common/cardview.h"

class QPushButton;

// The XF2 card is set up by a sibling tool, VXCFG_TC, that this view starts with the port and
// the card number and waits for.
class FrmXF2 : public CardView {
    Q_OBJECT
public:
    explicit FrmXF2(QWidget *parent = nullptr);

    void OpenView(const QString &model) override;
    // The view's start operation: the card has nothing to poll.
    void SetScaleMinMax(const QString &model) override { XF2_Init(model); }
    void XF2_Init(const QString &) {}

    QPushButton *cmdSettings = nullptr;

public slots:
    void cmdSettings_Click();

protected:
    void buildBody(QVBoxLayout *layout) override;
};

// Where the sibling tool is: VXCFG_TC (VXCFG_TC.exe on Windows) in the program's folder, unless
// a path was set (tests); an empty path restores the default.
QString SiblingToolPath();
void setSiblingToolPath(const QString &path);
// The tool's command line as the program gives it: the path, then the port and the card number,
// each behind a blank of its own, so two blanks follow the path.
QString SiblingToolCommandLine(int comPortNo, int cardNo);
