#include "profiles/profilestats.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsettings.h"

bool ProfileStats::initializeStructSettings(QString name, HParser::Generator *generator)
{
    structSettings = generator->copyFlashstackElementSettings(name);
    if (!structSettings)
        return false;
    structSettings->buildFormulaTrees();
    return true;
}
