#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace HParser
{
class FormulaNode;
class StructSetting;

/// An arithmetic expression of a schema: a bound, a scale, a number of decimals, a default or a
/// display index. Holds the text and, once built, the tree; evaluates it in IEEE doubles and passes
/// on the changes of the settings that it names.
///
/// Grammar, lowest priority first: sum = product {("+" | "-") product}; product = operand
/// {("*" | "/") operand}; operand = number | name | "(" sum ")". White space means nothing.
class Formula : public QObject
{
    Q_OBJECT

public:
    explicit Formula(const QString &text, QObject *parent = nullptr);
    ~Formula() override;

    /// The text as given, white space included.
    QString toString() const { return text; }
    /// The value at this moment. The tree must have been built. A division by zero follows IEEE.
    double toDouble() const;
    /// The tree, or null before a build and after a failed one. Stays owned by the formula.
    FormulaNode *getRootTree() const { return root.get(); }

    /// Builds the tree; names are looked up in settings, which must outlive the formula. Text that
    /// cannot be read leaves no tree and says "Failed to match!" on standard output.
    void buildFormulaTree(const QList<StructSetting *> &settings);
    /// Takes a new text and builds it. False, with the old text and tree back, where that fails.
    bool setFormula(const QString &newText, const QList<StructSetting *> &settings);
    /// Connects every setting named in the tree to this formula, once per mention.
    void attachSettingValueChangedSignals();
    /// Connects one setting; its nodes call this for attachSettingValueChangedSignals().
    void follow(const StructSetting *setting);
    /// Ends all connections to settings that were made so far.
    void detachSettingValueChangedSignals();

    /// Display names of the settings named below node, left before right, repeats included.
    QStringList getDependeeSettingsNames(const FormulaNode *node) const;

    /// The text from the "(" at start up to and including its partner; the rest of the text where
    /// there is none.
    static QString captureStuffInParentheses(const QString &text, int start);
    /// First setting with this variable name, or null.
    static StructSetting *getSettingByVariableName(const QList<StructSetting *> &settings,
                                                   const QString &name);

signals:
    /// A setting named in this formula has changed.
    void memberSettingChanged();

public slots:
    void on_memberSettingValueChanged();

private:
    QString text;
    std::unique_ptr<FormulaNode> root;
    /// To the settings of the tree at the time of attaching; a later tree may name others.
    QList<QMetaObject::Connection> followed;
};

} // namespace HParser
