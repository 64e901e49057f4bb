#include "SSGenerator/structsetting.h"

#include "SSGenerator/assertion.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/rounding.h"

#include <QRegExp>

#include <cmath>
#include <limits>

namespace HParser
{

namespace
{

constexpr char PLACE[] = "../SSGenerator/structsetting.cpp";

/// The text between the quotes that must surround it.
QString stripOutQuotes(const QString &string)
{
    demand(string.at(0) == QLatin1Char('"'), "string.at(0) == '\"'", PLACE, 409);
    demand(string.at(string.length() - 1) == QLatin1Char('"'),
           "string.at(string.length()-1) == '\"'", PLACE, 410);
    return string.mid(1, qMax(0, string.length() - 2));
}

SettingKind kindOfWord(const QString &word)
{
    if (word == QLatin1String("num"))
        return SettingKind::Num;
    if (word == QLatin1String("bool"))
        return SettingKind::Bool;
    if (word == QLatin1String("string"))
        return SettingKind::String;
    if (word == QLatin1String("list"))
        return SettingKind::List;
    return SettingKind::Unknown;
}

/// The first or last item of a list, freed from brackets around it.
QString edgeListItem(const QString &field)
{
    QRegExp quoted(QStringLiteral("\"[\\w\\s]*\""));
    quoted.indexIn(field);
    return stripOutQuotes(quoted.cap());
}

Formula *copyOf(const Formula *formula, QObject *parent)
{
    return formula ? new Formula(formula->toString(), parent) : nullptr;
}

} // namespace

StructSetting::StructSetting(const QString &line, QObject *parent) : QObject(parent)
{
    // Without a semicolon the whole line is both parts.
    const int semicolon = line.indexOf(QLatin1Char(';'));
    const QString declaration = line.left(semicolon);
    QString comment = line.mid(semicolon + 1);
    demand(declaration.size() != 0, "variableDeclarationPart.size() != 0", PLACE, 30);
    demand(comment.size() != 0, "commentDescriptorPart.size() != 0", PLACE, 31);

    parseDeclaration(declaration);

    comment.remove(QLatin1String("//"));
    QStringList fields = comment.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (QString &field : fields)
        field = field.simplified();
    parseFields(fields);
}

StructSetting::StructSetting(QObject *parent) : QObject(parent) {}

void StructSetting::parseDeclaration(const QString &declaration)
{
    QStringList tokens = declaration.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    name = tokens.at(tokens.size() - 1);
    tokens.removeLast();
    cType = tokens.join(QLatin1Char(' ')).toLower();

    const QRegExp brackets(QStringLiteral("\\[\\w*\\]"));
    isArray = name.contains(QLatin1Char('[')) && name.contains(brackets);
    if (!isArray)
        return;
    QRegExp size(QStringLiteral("\\[\\s*(\\d*)\\s*\\]"));
    if (size.indexIn(name) != -1)
        arraySize = size.cap(1).toInt();
    name.remove(brackets);
}

void StructSetting::parseFields(const QStringList &fields)
{
    const auto formula = [this](const QString &text) { return new Formula(text, this); };
    const auto isBasicWord = [](const QString &word) { return word == QLatin1String("basic"); };

    settingKind = kindOfWord(fields.at(0));
    switch (settingKind) {
    case SettingKind::Num:
        bits = fields.at(1);
        lowerBound = formula(fields.at(2));
        upperBound = formula(fields.at(3));
        scale = formula(fields.at(4).mid(1));
        decimals = formula(fields.at(5));
        descriptiveName = stripOutQuotes(fields.at(6));
        unit = stripOutQuotes(fields.at(7));
        xmlName = stripOutQuotes(fields.at(8));
        defaultFormula = formula(fields.at(9));
        visualIndex = formula(fields.at(10));
        isBasic = isBasicWord(fields.at(11));
        break;
    case SettingKind::Bool:
    case SettingKind::String:
    case SettingKind::List:
        bits = fields.at(1);
        descriptiveName = stripOutQuotes(fields.at(2));
        xmlName = stripOutQuotes(fields.at(3));
        if (settingKind == SettingKind::Bool)
            defaultBool = fields.at(4) == QLatin1String("1");
        else
            defaultText = stripOutQuotes(fields.at(4));
        visualIndex = formula(fields.at(5));
        if (settingKind == SettingKind::List)
            parseListItems(fields);
        isBasic = isBasicWord(settingKind == SettingKind::List ? fields.last() : fields.at(6));
        break;
    case SettingKind::Unknown:
        break;
    }
}

void StructSetting::parseListItems(const QStringList &fields)
{
    const int first = 6;
    const int last = fields.size() - 2;
    for (int i = first; i <= last; ++i) {
        const bool atEdge = i == first || i == last;
        listItems.append(atEdge ? edgeListItem(fields.at(i)) : stripOutQuotes(fields.at(i)));
    }
}

QString StructSetting::getValue() const
{
    switch (settingKind) {
    case SettingKind::Num:
        return QString::number(numValue, 'g', 6);
    case SettingKind::Bool:
        return boolValue ? QStringLiteral("true") : QStringLiteral("false");
    case SettingKind::String:
    case SettingKind::List:
        return textValue;
    case SettingKind::Unknown:
        break;
    }
    return QStringLiteral("ERROR");
}

double StructSetting::getShownNumber() const
{
    if (settingKind != SettingKind::Num)
        return getValue().toDouble();
    if (!shownNumber)
        shownNumber = getValue().toDouble();
    return *shownNumber;
}

bool StructSetting::setValue(double wanted)
{
    Q_ASSERT(settingKind == SettingKind::Num);
    if (!advancedEnabled && !isBasic)
        wanted = defaultFormula->toDouble();
    const double fitting = getValueInBounds(wanted);
    const double rounded = getRoundedValue(fitting);
    if (rounded == numValue)
        return true;
    numValue = rounded;
    shownNumber.reset();
    emit valueChanged();
    // A bound may be finer than the decimals: what rounding gives back was not changed.
    return wanted == fitting || wanted == rounded || !(advancedEnabled || isBasic);
}

void StructSetting::setValue(bool wanted)
{
    if (wanted == boolValue)
        return;
    boolValue = wanted;
    emit valueChanged();
}

void StructSetting::setValue(const QString &wanted)
{
    if (!textValue.isNull() && wanted == textValue)
        return;
    // One place of the charger's field belongs to the terminating zero. A list has no such field.
    textValue = wanted.left(arraySize - 1);
    if (textValue.isNull())
        textValue = QLatin1String("");
    emit valueChanged();
}

double StructSetting::getValueInBounds(double value) const
{
    const double lowest = lowerBound->toDouble();
    const double highest = upperBound->toDouble();
    const bool dividedByZero = value > std::numeric_limits<double>::max();
    const double candidate = lowest > value || dividedByZero ? lowest : value;
    return highest < candidate ? highest : candidate;
}

double StructSetting::getRoundedValue(double value) const
{
    const double power = std::pow(10.0, decimals->toDouble());
    return roundedToInt32(power * value) / power;
}

void StructSetting::updateValue()
{
    // A flag or a text has no limits that could have moved.
    if (settingKind == SettingKind::Num)
        setValue(getShownNumber());
}

void StructSetting::setDefault()
{
    switch (settingKind) {
    case SettingKind::Num: {
        const double rounded = getRoundedValue(defaultFormula->toDouble());
        if (rounded != numValue)
            setValue(rounded);
        break;
    }
    case SettingKind::Bool:
        setValue(defaultBool);
        break;
    case SettingKind::String:
        setValue(QString::fromUtf8(defaultText.toUtf8()));
        break;
    case SettingKind::List:
    case SettingKind::Unknown:
        break;
    }
}

void StructSetting::enableAdvancedMode(bool on)
{
    if (isBasic)
        return;
    advancedEnabled = on;
    if (!on)
        setDefault();
    emit enableView(on);
}

StructSetting *StructSetting::deepCopy() const
{
    auto *copy = new StructSetting;
    copy->name = name;
    copy->cType = cType;
    copy->isArray = isArray;
    copy->arraySize = arraySize;
    copy->settingKind = settingKind;
    copy->bits = bits;
    copy->lowerBound = copyOf(lowerBound, copy);
    copy->upperBound = copyOf(upperBound, copy);
    copy->scale = copyOf(scale, copy);
    copy->decimals = copyOf(decimals, copy);
    copy->unit = unit;
    copy->descriptiveName = descriptiveName;
    copy->xmlName = xmlName;
    copy->defaultFormula = copyOf(defaultFormula, copy);
    copy->defaultBool = defaultBool;
    copy->defaultText = defaultText;
    copy->visualIndex = copyOf(visualIndex, copy);
    copy->isBasic = isBasic;
    copy->listItems = listItems;
    return copy;
}

void StructSetting::buildFormulaTrees(const QList<StructSetting *> &settings)
{
    if (settingKind != SettingKind::Num)
        return;
    for (Formula *formula : {lowerBound, upperBound, scale, decimals, defaultFormula, visualIndex})
        formula->buildFormulaTree(settings);
}

void StructSetting::attachMemberSettingSignalsToContainerFormulaSlots()
{
    if (settingKind != SettingKind::Num)
        return;
    for (Formula *formula : {lowerBound, upperBound, scale, decimals, defaultFormula})
        formula->attachSettingValueChangedSignals();
}

void StructSetting::attachMemberFormulaSignalsToThisSettingsSlot()
{
    if (settingKind != SettingKind::Num)
        return;
    for (Formula *formula : {lowerBound, upperBound, scale, decimals, defaultFormula}) {
        connect(formula, &Formula::memberSettingChanged, this,
                &StructSetting::on_formulasMemberSettingChanged);
    }
}

void StructSetting::detachFormulaSignals()
{
    if (settingKind != SettingKind::Num)
        return;
    for (Formula *formula : {lowerBound, upperBound, scale, decimals, defaultFormula}) {
        formula->detachSettingValueChangedSignals();
        disconnect(formula, &Formula::memberSettingChanged, this,
                   &StructSetting::on_formulasMemberSettingChanged);
    }
}

bool StructSetting::setFormulaTrees(const StructSetting *other,
                                    const QList<StructSetting *> &settings)
{
    if (settingKind != SettingKind::Num)
        return true;
    defaultFormula->setFormula(other->defaultFormula->toString(), settings);
    lowerBound->setFormula(other->lowerBound->toString(), settings);
    upperBound->setFormula(other->upperBound->toString(), settings);
    scale->setFormula(other->scale->toString(), settings);
    decimals->setFormula(other->decimals->toString(), settings);
    return setValue(numValue);
}

void StructSetting::setUpperBound(const QString &text)
{
    setUpperBound(text, {});
}

void StructSetting::setUpperBound(const QString &text, const QList<StructSetting *> &settings)
{
    auto *bound = new Formula(text, this);
    bound->buildFormulaTree(settings);
    delete upperBound;
    upperBound = bound;
}

QStringList StructSetting::getDependeeSettingsNames() const
{
    QStringList names;
    if (settingKind != SettingKind::Num)
        return names;
    for (const Formula *formula : {lowerBound, upperBound, defaultFormula, scale, decimals})
        names += formula->getDependeeSettingsNames(formula->getRootTree());
    return names;
}

void StructSetting::on_formulasMemberSettingChanged()
{
    setValue(getShownNumber());
}

} // namespace HParser
