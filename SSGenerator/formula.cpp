#include "SSGenerator/formula.h"

#include "SSGenerator/formulanode.h"
#include "SSGenerator/structsetting.h"

#include <QStringView>

#include <cstdio>

namespace HParser
{

namespace
{

/// Length of `[+-]?\d+(\.\d+)?` at the start of text; 0 where it does not match.
int numberLength(QStringView text)
{
    const int size = int(text.size());
    int end = 0;
    if (end < size && (text[end] == QLatin1Char('+') || text[end] == QLatin1Char('-')))
        ++end;
    const int firstDigit = end;
    while (end < size && text[end].isDigit())
        ++end;
    if (end == firstDigit)
        return 0;
    if (end + 1 < size && text[end] == QLatin1Char('.') && text[end + 1].isDigit()) {
        ++end;
        while (end < size && text[end].isDigit())
            ++end;
    }
    return end;
}

/// Length from the "(" at the start of text up to and including its partner; the whole length
/// where there is none.
int parenthesesLength(QStringView text)
{
    const int size = int(text.size());
    int depth = 1;
    for (int i = 1; i < size; ++i) {
        if (text[i] == QLatin1Char('('))
            ++depth;
        else if (text[i] == QLatin1Char(')') && --depth == 0)
            return i + 1;
    }
    return size;
}

bool isAsciiLetter(QChar c)
{
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
           (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
}

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c == QLatin1Char('_');
}

/// Length of a letter and the word characters after it; 0 where text begins otherwise.
int nameLength(QStringView text)
{
    if (!isAsciiLetter(text[0]))
        return 0;
    int end = 1;
    while (end < text.size() && isWordCharacter(text[end]))
        ++end;
    return end;
}

/// Length of the operand at the start of text, which is not empty; 0 where there is none.
int operandLength(QStringView text)
{
    if (const int length = numberLength(text))
        return length;
    if (text[0] == QLatin1Char('('))
        return text.contains(QLatin1Char(')')) ? parenthesesLength(text) : 0;
    return nameLength(text);
}

/// Where the operators of a text stand; parentheses hide those inside.
struct Operators {
    int count = 0;
    int lastSum = -1;     ///< index of the last + or -
    int lastProduct = -1; ///< index of the last * or /
};

/// False where an operand cannot be read.
bool findOperators(QStringView text, Operators &found)
{
    int position = 0;
    do {
        const int length = position < text.size() ? operandLength(text.mid(position)) : 0;
        if (length == 0)
            return false;
        position += length;
        if (position == text.size())
            return true;
        ++found.count;
        const QChar sign = text[position];
        if (sign == QLatin1Char('+') || sign == QLatin1Char('-'))
            found.lastSum = position;
        else if (sign == QLatin1Char('*') || sign == QLatin1Char('/'))
            found.lastProduct = position;
        ++position;
    } while (position < text.size());
    return true;
}

StructSetting *findSetting(const QList<StructSetting *> &settings, QStringView name)
{
    for (StructSetting *setting : settings) {
        if (QStringView(setting->name) == name)
            return setting;
    }
    return nullptr;
}

std::unique_ptr<FormulaNode> buildLeaf(QStringView operand, const QList<StructSetting *> &settings)
{
    if (numberLength(operand) > 0)
        return std::make_unique<FormulaNodeNum>(operand.toString().toDouble());
    return std::make_unique<FormulaNodeVar>(findSetting(settings, operand));
}

/// Builds the tree of a text without white space by splitting it at the operator that is applied
/// last: the last of the lowest priority.
std::unique_ptr<FormulaNode> buildTree(QStringView text, const QList<StructSetting *> &settings)
{
    // One pair only: what is still in parentheses afterwards is taken for an operand.
    if (text.startsWith(QLatin1Char('(')) && parenthesesLength(text) == text.size())
        text = text.mid(1, qMax(0, int(text.size()) - 2));

    Operators operators;
    if (!findOperators(text, operators)) {
        std::puts("Failed to match!");
        std::fflush(stdout);
        return nullptr;
    }
    if (operators.count == 0)
        return buildLeaf(text, settings);

    const int split = operators.lastSum != -1 ? operators.lastSum : operators.lastProduct;
    // An unknown operator leaves nothing to split at, one at the end nothing to its right.
    if (split == -1 || split + 1 == text.size())
        qt_assert_x("QList<T>::at", "index out of range", __FILE__, __LINE__);

    auto node = std::make_unique<FormulaNodeMathOp>();
    node->setOpType(text[split].toLatin1());
    auto left = buildTree(text.left(split), settings);
    auto right = buildTree(text.mid(split + 1), settings);
    node->setChildren(std::move(left), std::move(right));
    return node;
}

QString withoutWhiteSpace(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!c.isSpace())
            result.append(c);
    }
    return result;
}

} // namespace

Formula::Formula(const QString &text, QObject *parent) : QObject(parent), text(text) {}

Formula::~Formula() = default;

double Formula::toDouble() const
{
    Q_ASSERT(root);
    return root->evaluate();
}

void Formula::buildFormulaTree(const QList<StructSetting *> &settings)
{
    const QString packed = withoutWhiteSpace(text);
    Q_UNUSED(packed.at(0)); // an empty formula ends the process
    root = buildTree(packed, settings);
}

bool Formula::setFormula(const QString &newText, const QList<StructSetting *> &settings)
{
    const QString oldText = text;
    text = newText;
    buildFormulaTree(settings);
    if (root)
        return true;
    text = oldText;
    buildFormulaTree(settings);
    return false;
}

void Formula::attachSettingValueChangedSignals()
{
    Q_ASSERT(root);
    root->attachSettingValueChangedSignals(this);
}

void Formula::follow(const StructSetting *setting)
{
    followed.append(connect(setting, &StructSetting::valueChanged, this,
                            &Formula::on_memberSettingValueChanged));
}

void Formula::detachSettingValueChangedSignals()
{
    for (const QMetaObject::Connection &connection : qAsConst(followed))
        disconnect(connection);
    followed.clear();
}

QStringList Formula::getDependeeSettingsNames(const FormulaNode *node) const
{
    if (const auto *variable = qobject_cast<const FormulaNodeVar *>(node)) {
        Q_ASSERT(variable->getSetting());
        return {variable->getSetting()->descriptiveName};
    }
    if (const auto *operation = qobject_cast<const FormulaNodeMathOp *>(node)) {
        return getDependeeSettingsNames(operation->getLeftChild()) +
               getDependeeSettingsNames(operation->getRightChild());
    }
    return {};
}

QString Formula::captureStuffInParentheses(const QString &text, int start)
{
    return text.mid(start, parenthesesLength(QStringView(text).mid(start)));
}

StructSetting *Formula::getSettingByVariableName(const QList<StructSetting *> &settings,
                                                 const QString &name)
{
    return findSetting(settings, name);
}

void Formula::on_memberSettingValueChanged()
{
    emit memberSettingChanged();
}

} // namespace HParser
