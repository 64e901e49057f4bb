#include "SSGenerator/formulanode.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"

namespace HParser
{

FormulaNodeNum::FormulaNodeNum(double number, QObject *parent) : FormulaNode(parent), number(number)
{
}

double FormulaNodeNum::evaluate() const
{
    return number;
}

QString FormulaNodeNum::getFormulaNodeType() const
{
    return QStringLiteral("Num");
}

void FormulaNodeNum::attachSettingValueChangedSignals(Formula *) {}

FormulaNodeVar::FormulaNodeVar(StructSetting *setting, QObject *parent)
    : FormulaNode(parent), setting(setting)
{
}

double FormulaNodeVar::evaluate() const
{
    Q_ASSERT(setting);
    return setting->getShownNumber();
}

QString FormulaNodeVar::getFormulaNodeType() const
{
    return QStringLiteral("NodeVar");
}

void FormulaNodeVar::attachSettingValueChangedSignals(Formula *formula)
{
    formula->follow(setting);
}

void FormulaNodeMathOp::setOpType(char sign)
{
    switch (sign) {
    case '+':
        opType = OpType::Add;
        break;
    case '-':
        opType = OpType::Subtract;
        break;
    case '*':
        opType = OpType::Multiply;
        break;
    case '/':
        opType = OpType::Divide;
        break;
    default:
        Q_ASSERT_X(false, "setOpType", "no operator of a formula");
    }
}

void FormulaNodeMathOp::setChildren(std::unique_ptr<FormulaNode> left,
                                    std::unique_ptr<FormulaNode> right)
{
    leftChild = std::move(left);
    rightChild = std::move(right);
}

double FormulaNodeMathOp::evaluate() const
{
    Q_ASSERT(leftChild && rightChild);
    const double left = leftChild->evaluate();
    const double right = rightChild->evaluate();
    switch (opType) {
    case OpType::Add:
        return left + right;
    case OpType::Subtract:
        return left - right;
    case OpType::Multiply:
        return left * right;
    case OpType::Divide:
        break;
    }
    return left / right;
}

QString FormulaNodeMathOp::getFormulaNodeType() const
{
    return QStringLiteral("MathOp");
}

void FormulaNodeMathOp::attachSettingValueChangedSignals(Formula *formula)
{
    Q_ASSERT(leftChild && rightChild);
    leftChild->attachSettingValueChangedSignals(formula);
    rightChild->attachSettingValueChangedSignals(formula);
}

} // namespace HParser
