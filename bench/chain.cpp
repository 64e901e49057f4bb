#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using HParser::StructSetting;
using HParser::StructSettings;

namespace
{
constexpr int length = 100;
constexpr int rounds = 1001;
} // namespace

/// Changes the first of a chain of settings, each of which has its default and a bound from the one
/// before it, and tells the milliseconds until all have settled.
int main()
{
    QList<StructSetting *> chain;
    chain.append(new StructSetting(
        QStringLiteral("long x0; // num, auto, 0, 1000, *1, 1, \"X\", \"\", \"x\", 1, 0, basic")));
    for (int i = 1; i <= length; ++i) {
        chain.append(new StructSetting(
            QStringLiteral("long x%1; // num, auto, x%2 * 0.5, 1000, *1, 1, \"X\", \"\", \"x\", "
                           "(x%2 * 2) / 2, %1, advanced")
                .arg(i)
                .arg(i - 1)));
    }
    StructSettings record;
    record.setOriginalOrderStructSettings(chain);
    record.buildFormulaTrees();

    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const double value = 2 + i % 2;
        const auto start = std::chrono::steady_clock::now();
        chain.constFirst()->setValue(value);
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - start;
        times.push_back(time.count());
        if (chain.constLast()->getNumber() != value)
            return 1;
    }
    std::sort(times.begin(), times.end());
    std::printf("change at the head of %d dependent settings: %.3f ms (99 of 100 below %.3f)\n",
                length, times[rounds / 2], times[rounds * 99 / 100]);
    return 0;
}
