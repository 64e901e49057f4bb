#pragma once

/// The part of the start-up self-check that concerns pages of flash. It runs on every start: a
/// build that packs bits wrongly must not get near a charger. Each group prints its name; a check
/// that fails ends the process.
namespace HEXGeneratorParser
{
void runWriteToHexChecks();
void runHexBufferChecks();
void runHexUtilityChecks();

} // namespace HEXGeneratorParser
