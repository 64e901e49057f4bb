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
/// nothing has been read. Application-modal; deletes itself on close.
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
