#include "sandbox/Gzip.h"

#include <zlib.h>

namespace korvo::sandbox {
namespace {

constexpr int gzipWindow = 15 + 16; ///< zlib's way to say gzip.
constexpr int memoryLevel = 8;

/// Runs `step` over the input until it ends or fails.
template <typename Step> QByteArray run(z_stream &stream, const QByteArray &bytes, Step step)
{
    QByteArray input = bytes; // zlib wants it writable, though it only reads.
    stream.next_in = reinterpret_cast<Bytef *>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    QByteArray output;
    QByteArray piece(64 * 1024, Qt::Uninitialized);
    int result = Z_OK;
    while (result == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef *>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        result = step(&stream);
        output.append(piece.constData(), piece.size() - static_cast<qsizetype>(stream.avail_out));
    }
    return result == Z_STREAM_END ? output : QByteArray();
}

} // namespace

QByteArray gzip(const QByteArray &bytes)
{
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, memoryLevel, Z_DEFAULT_STRATEGY) != Z_OK)
        return {};
    const QByteArray output = run(stream, bytes, [](z_stream *s) { return deflate(s, Z_FINISH); });
    deflateEnd(&stream);
    return output;
}

QByteArray gunzip(const QByteArray &bytes)
{
    z_stream stream{};
    if (inflateInit2(&stream, gzipWindow) != Z_OK)
        return {};
    const QByteArray output = run(stream, bytes, [](z_stream *s) { return inflate(s, Z_NO_FLUSH); });
    inflateEnd(&stream);
    return output;
}

} // namespace korvo::sandbox
