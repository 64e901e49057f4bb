#pragma once

#include <QDialog>

#include <memory>

namespace HParser
{
class Generator;
}

namespace Ui
{
class DisplayUnitStats;
}

/// Shows what the charger counted in its lifetime, as it was last read; the schema's defaults where
/// nothing has been read. New figures show at once; those of a schema that has gone stay as they
/// were. Not modal, so that it can stay open beside the window; deletes itself on close.
class DisplayUnitStats : public QDialog
{
    Q_OBJECT

public:
    /// Stays hidden until show().
    DisplayUnitStats(HParser::Generator *generator, QWidget *parent = nullptr);
    ~DisplayUnitStats() override;

public slots:
    void on_OKButtonClicked();

private:
    std::unique_ptr<Ui::DisplayUnitStats> ui;
};
