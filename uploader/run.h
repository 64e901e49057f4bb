#pragma once

#include "uploader/options.h"

namespace Uploader
{
/// Does what the options ask for, in the tool's fixed order. Returns the exit status.
int run(const Options &options);

} // namespace Uploader
