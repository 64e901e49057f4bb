#pragma once

#include "HEXGeneratorParser/hexmanager.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

/// What the HEX manager does in a test that links fakehexmanager.cpp, which stands in front of the
/// library's code: no schema, no image, but every outcome on demand.
struct FakeHexManager {
    FakeHexManager();

    int profiles = 1;
    int allowed = 17;
    QStringList unstorable;
    bool exportWorks = true;
    bool chargerMatches = true;
    std::optional<int> importThrows;
    /// Is told of each call: "import", "compare", "export to NAME", "export N profiles".
    std::function<void(QString)> called = [](const QString &) {};

    std::unique_ptr<HEXGeneratorParser::HEXManager> object;
};
