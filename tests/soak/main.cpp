#include "soak.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>

#include <cstdio>

namespace
{
Soak *playing = nullptr;

/// What a story cannot do ends the program: then the deeds that led there are worth knowing.
void tell(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (text.startsWith(QLatin1String("This plugin does not support")))
        return;
    std::fprintf(stderr, "%s\n", qPrintable(text));
    if (type == QtFatalMsg && playing)
        playing->giveUp(text);
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    QApplication application(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Connects, edits, writes and disconnects for many rounds, with faults on the way. The exit "
        "status is 1 when one of its laws was broken."));
    parser.addHelpOption();
    const QCommandLineOption rounds(QStringLiteral("rounds"), QStringLiteral("Rounds to play."),
                                    QStringLiteral("count"), QStringLiteral("500"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed of all chance."),
                                  QStringLiteral("number"), QStringLiteral("1"));
    const QCommandLineOption hardware(
        QStringLiteral("hardware"),
        QStringLiteral("The charger's, as velantor-sim names it; else any."),
        QStringLiteral("name"));
    parser.addOptions({rounds, seed, hardware});
    parser.process(application);

    Soak::Options options;
    options.rounds = parser.value(rounds).toInt();
    options.seed = parser.value(seed).toUInt();
    options.hardware = parser.value(hardware);
    std::printf("seed %u, %d rounds\n", options.seed, options.rounds);
    std::fflush(stdout);
    QElapsedTimer timer;
    timer.start();
    qInstallMessageHandler(tell);
    Soak soak(options);
    playing = &soak;
    const bool good = soak.run();
    playing = nullptr;
    std::printf("%.0f seconds\n", double(timer.elapsed()) / 1000);
    return good ? 0 : 1;
}
