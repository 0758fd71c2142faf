#pragma once

#include "ui/viewregistry.h"

#include <QWidget>

// The view of an empty slot: a frame that says so, and nothing that talks to the rack.
class FrmNONE : public QWidget, public OpenableView {
    Q_OBJECT
public:
    explicit FrmNONE(QWidget *parent = nullptr);
    void OpenView(const QString &modelName) override;
};
