#include "ImportProfiles/parsedfselement.h"

#include "ImportProfiles/settingtext.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <cstdio>

namespace ImportProfiles
{
ParsedFSElement::ParsedFSElement(QObject *parent) : QObject(parent) {}

HParser::StructSettings *
ParsedFSElement::toStructSettings(const HParser::Generator *generator) const
{
    const HParser::StructSettings *original =
        generator->getFSElementByName(properties.value(QStringLiteral("name")));
    if (!original)
        return nullptr;

    HParser::StructSettings *copy = original->deepCopyWithValues();
    for (HParser::StructSetting *setting : copy->getOriginalOrderStructSettings()) {
        // By the schema's own key, not by its tag: a member whose key changes in tag form (the
        // barcode) is not found and keeps what the generator holds.
        const QString value = properties.value(setting->xmlName);
        setting->advancedEnabled = true;
        if (!value.isEmpty())
            setValueFromText(setting, value);
    }
    return copy;
}

void ParsedFSElement::print() const
{
    std::printf("ID : %d\n", id);
    std::printf("isActive : %d\n", isActive);
    std::printf("isDefault : %d\n", isDefault);
    std::printf("isModifiable : %d\n", isModifiable);
    for (auto property = properties.begin(); property != properties.end(); ++property)
        std::printf("%s : %s\n", qUtf8Printable(property.key()), qUtf8Printable(property.value()));
    std::fflush(stdout);
}

} // namespace ImportProfiles
