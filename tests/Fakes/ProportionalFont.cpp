#include "Fakes/ProportionalFont.h"

#include <QByteArray>
#include <QDataStream>
#include <QFontDatabase>
#include <QIODevice>
#include <QList>

#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

// The least of a TrueType file. Source: the OpenType specification, version 1.9.
constexpr qint16 unitsPerEm = 640; // 32 a pixel at 20 pixels, so that nothing there is rounded.
constexpr qint16 blockHeight = 448;
constexpr qint16 gap = 64;
constexpr quint16 noGlyph = 0;
const auto family = u"Korvo Narrow One"_s;

/// Advances of the glyphs: the one for all that is missing, the blank, the digits, and the colon that follows them.
const QList<quint16> advances{384, 160, 384, 192, 384, 384, 384, 384, 384, 384, 384, 384, 128};
constexpr quint16 blankGlyph = 1;
constexpr quint16 zeroGlyph = 2;

template <typename... Fields> QByteArray packed(Fields... fields)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    (stream << ... << fields);
    return bytes;
}

using U16 = quint16;
using U32 = quint32;
using I16 = qint16;

QByteArray head()
{
    return packed(U32{0x10000}, U32{0x10000}, U32{0}, U32{0x5f0f3cf5}, U16{0}, U16{unitsPerEm}, qint64{0}, qint64{0},
                  I16{0}, I16{0}, unitsPerEm, blockHeight, U16{0}, U16{1}, I16{2}, I16{1}, I16{0});
}

QByteArray horizontalHeader()
{
    return packed(U32{0x10000}, I16{512}, I16{-128}, I16{0}, U16{384}, I16{0}, gap, unitsPerEm, I16{1}, I16{0}, I16{0},
                  I16{0}, I16{0}, I16{0}, I16{0}, I16{0}, U16(advances.size()));
}

QByteArray maximumProfile()
{
    return packed(U32{0x10000}, U16(advances.size()), U16{4}, U16{1}, U16{0}, U16{0}, U16{2}, U16{0}, U16{0}, U16{0},
                  U16{0}, U16{0}, U16{0}, U16{0}, U16{0});
}

QByteArray horizontalMetrics()
{
    QByteArray bytes;
    for (const auto advance : advances)
        bytes += packed(advance, I16{0});
    return bytes;
}

/// Blocks that begin at the left, and where each of them is.
std::pair<QByteArray, QByteArray> glyphs()
{
    QByteArray blocks;
    QByteArray offsets = packed(U32{0});
    for (qsizetype glyph = 0; glyph < advances.size(); ++glyph) {
        const auto width = I16(advances[glyph] - gap);
        if (glyph != blankGlyph && glyph != noGlyph) {
            constexpr quint8 onCurve = 1;
            blocks += packed(I16{1}, I16{0}, I16{0}, width, blockHeight, U16{3}, U16{0}, onCurve, onCurve, onCurve,
                             onCurve);
            blocks += packed(I16{0}, I16{0}, width, I16{0}, I16{0}, blockHeight, I16{0}, I16(-blockHeight));
        }
        offsets += packed(U32(blocks.size()));
    }
    return {blocks, offsets};
}

QByteArray characterMap()
{
    const auto delta = [](U16 glyph, char first) { return U16(glyph - first); };
    const auto segments = packed(U16{' '}, U16{':'}, U16{0xffff}, U16{0}, U16{' '}, U16{'0'}, U16{0xffff},
                                 delta(blankGlyph, ' '), delta(zeroGlyph, '0'), U16{1}, U16{0}, U16{0}, U16{0});
    return packed(U16{0}, U16{1}, U16{3}, U16{1}, U32{12})
        + packed(U16{4}, U16(14 + segments.size()), U16{0}, U16{6}, U16{4}, U16{1}, U16{2}) + segments;
}

QByteArray names()
{
    const QList<std::pair<U16, QString>> texts{
        {U16{1}, family}, {U16{2}, u"Regular"_s}, {U16{4}, family}, {U16{6}, u"KorvoNarrowOne"_s}};
    QByteArray strings;
    QByteArray records;
    for (const auto &[id, text] : texts) {
        QByteArray letters;
        for (const auto letter : text)
            letters += packed(U16(letter.unicode()));
        records += packed(U16{3}, U16{1}, U16{0x409}, id, U16(letters.size()), U16(strings.size()));
        strings += letters;
    }
    return packed(U16{0}, U16(texts.size()), U16(6 + records.size())) + records + strings;
}

QByteArray fontFile()
{
    const auto [blocks, offsets] = glyphs();
    const QList<std::pair<QByteArray, QByteArray>> tables{
        {"cmap"_ba, characterMap()},
        {"glyf"_ba, blocks},
        {"head"_ba, head()},
        {"hhea"_ba, horizontalHeader()},
        {"hmtx"_ba, horizontalMetrics()},
        {"loca"_ba, offsets},
        {"maxp"_ba, maximumProfile()},
        {"name"_ba, names()},
        {"post"_ba, packed(U32{0x30000}, U32{0}, I16{0}, I16{0}, U32{0}, U32{0}, U32{0}, U32{0}, U32{0})},
    };
    QByteArray directory = packed(U32{0x10000}, U16(tables.size()), U16{128}, U16{3}, U16{16});
    QByteArray content;
    const auto start = 12 + 16 * tables.size();
    for (const auto &[tag, bytes] : tables) {
        directory += tag + packed(U32{0}, U32(start + content.size()), U32(bytes.size()));
        content += bytes;
        content.resize((content.size() + 3) / 4 * 4, '\0');
    }
    return directory + content;
}

} // namespace

QFont proportionalFont(int pixelSize)
{
    static const int id = QFontDatabase::addApplicationFontFromData(fontFile());
    if (!QFontDatabase::applicationFontFamilies(id).contains(family))
        qFatal("The font of the test cannot be loaded");
    QFont font(family);
    font.setPixelSize(pixelSize);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace korvo
