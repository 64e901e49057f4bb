#pragma once

#include <string>
#include <vector>

namespace simulator
{
/// A profile page that the program carries.
struct NamedPage {
    std::string name;
    std::string hexText;
};

/// The pages of the hardware that there is, in the order of their names.
const std::vector<NamedPage> &namedPages();

/// The Intel HEX text of a page, or null for an unknown name.
const std::string *findNamedPage(const std::string &name);

/// The names with "|" between, for messages.
std::string namedPageNames();

} // namespace simulator
