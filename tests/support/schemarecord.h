#pragma once

#include "SSGenerator/structsettings.h"

#include <QStringList>

#include <memory>

/// A struct of the schema made from its member lines, formulas built and defaults applied.
std::unique_ptr<HParser::StructSettings> schemaRecord(const QStringList &memberLines);

/// The member line of a basic number "x" with these fields, each as it stands in a schema.
QString numberLine(const QString &lower, const QString &upper, const QString &decimals,
                   const QString &preset);
