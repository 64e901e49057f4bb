#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QStringList>

/// How a run of vexa.bin ended and what it said.
struct VexaRun {
    int status = -1; ///< exit status; -1 when it was killed
    QByteArray output;
    QList<QByteArray> chunks; ///< the output as it was flushed, piece by piece
    QByteArray errors;

    /// The output without the percentages of the two progress texts.
    QByteArray withoutProgress() const;
    /// The percentages of "Upload Progress" or "Verify Progress" in their order.
    QList<int> progress(const QByteArray &kind) const;
};

/// The first two lines of every run.
constexpr char vexaBanner[] = "Serial Uploader by Tolk Technologies (2011)\nVersion 1.2\n";

/// Runs vexa.bin in the current directory until its end.
VexaRun runVexa(const QStringList &arguments);

/// A piece of a memory image: byte address and bytes.
using ImagePiece = QPair<int, QByteArray>;

/// Pieces as Intel HEX text with records of 16 bytes.
QByteArray hexText(const QList<ImagePiece> &pieces);

/// What the uploader saves for a memory image that begins at byte address 0: rows of 256 bytes
/// without the blank ones, in lines of 16 bytes, the last line without a line feed.
QByteArray savedHexText(const QList<ImagePiece> &rows);

/// Size bytes of a pattern that has every value, the control bytes of the line among them; each
/// fourth byte is 0 as in the charger's flash.
QByteArray patternImage(int size, int seed);
