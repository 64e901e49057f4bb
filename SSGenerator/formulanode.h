#pragma once

#include <QObject>
#include <QString>

#include <memory>

namespace HParser
{
class Formula;
class StructSetting;

/// A node of a formula's tree.
class FormulaNode : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The value at this moment.
    virtual double evaluate() const = 0;
    /// "Num", "NodeVar" or "MathOp".
    virtual QString getFormulaNodeType() const = 0;
    /// Tells formula of the changes of every setting below this node, once per mention.
    virtual void attachSettingValueChangedSignals(Formula *formula) = 0;
};

/// A number as written.
class FormulaNodeNum final : public FormulaNode
{
    Q_OBJECT

public:
    explicit FormulaNodeNum(double number, QObject *parent = nullptr);

    double evaluate() const override;
    QString getFormulaNodeType() const override;
    void attachSettingValueChangedSignals(Formula *formula) override;

private:
    double number;
};

/// The value of a setting, as its user reads it: with six significant digits.
class FormulaNodeVar final : public FormulaNode
{
    Q_OBJECT

public:
    /// setting stays someone else's. It is null for a name that the struct does not have; such a
    /// node must not be evaluated.
    explicit FormulaNodeVar(StructSetting *setting, QObject *parent = nullptr);

    StructSetting *getSetting() const { return setting; }
    void setSetting(StructSetting *other) { setting = other; }

    double evaluate() const override;
    QString getFormulaNodeType() const override;
    void attachSettingValueChangedSignals(Formula *formula) override;

private:
    StructSetting *setting;
};

/// Two operands and what to do with them. A child is null where its text could not be read; such a
/// node must not be evaluated.
class FormulaNodeMathOp final : public FormulaNode
{
    Q_OBJECT

public:
    enum class OpType { Add = 0, Subtract = 1, Multiply = 2, Divide = 3 };

    using FormulaNode::FormulaNode;

    OpType getOpType() const { return opType; }
    /// sign is one of + - * /.
    void setOpType(char sign);
    FormulaNode *getLeftChild() const { return leftChild.get(); }
    FormulaNode *getRightChild() const { return rightChild.get(); }
    void setChildren(std::unique_ptr<FormulaNode> left, std::unique_ptr<FormulaNode> right);

    double evaluate() const override;
    QString getFormulaNodeType() const override;
    void attachSettingValueChangedSignals(Formula *formula) override;

private:
    OpType opType = OpType::Add;
    std::unique_ptr<FormulaNode> leftChild;
    std::unique_ptr<FormulaNode> rightChild;
};

} // namespace HParser
