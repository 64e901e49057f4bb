#pragma once

#include <QComboBox>

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

/// The choice of the charger's model in the tool bar. The master schema spans all hardware: while
/// it is in force, the electrical limits of the chosen model are written into its chemistry
/// records. A strict schema has limits of its own, which tell the model: then the choice is locked
/// to it.
class HardwareDropdown : public QComboBox
{
    Q_OBJECT

public:
    /// Starts with the 48 V model and leaves the limits of the schema as they are until the first
    /// change or the first enable(). The generator must outlive this object.
    explicit HardwareDropdown(HParser::Generator *generator, QWidget *parent = nullptr);

signals:
    /// Another model is shown; under the master schema its limits are in the records.
    void newLimits();

public slots:
    /// Runs on every change of the item, from any source.
    void newItemChosen();
    /// A strict schema is in force: shows its model, or nothing where it is of none, and locks.
    void disable();
    /// The master schema was parsed anew: unlocks, and writes the limits of the model shown again.
    void enable();
    /// Goes back to the former item, and so to its limits.
    void revertLimits();

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    /// Upper bounds in volts and amperes.
    void setNickleLimits(int nominal, int max, int bulk);
    void setLeadLimits(int full, int bulk);
    void setLithiumLimits(int full, int bulk);
    void setAllSettingsLimits();
    HParser::StructSettings *record(const QString &chemistry) const;

    HParser::Generator *generator;
    /// Index of the item in force, -1 for none. The item shown is QComboBox::currentIndex().
    int currentIndex = 1;
    /// Index to go back to.
    int previousIndex = -1;
};
