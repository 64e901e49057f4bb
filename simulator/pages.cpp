#include "simulator/pages.h"

namespace simulator
{

const std::string *findNamedPage(const std::string &name)
{
    for (const NamedPage &page : namedPages()) {
        if (page.name == name)
            return &page.hexText;
    }
    return nullptr;
}

std::string namedPageNames()
{
    std::string names;
    for (const NamedPage &page : namedPages())
        names += (names.empty() ? "" : "|") + page.name;
    return names;
}

} // namespace simulator
