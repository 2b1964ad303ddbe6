#include "platform/linux/files/HeifReader.h"

#include <QColorSpace>
#include <QLibrary>
#include <QLoggingCategory>

#include <algorithm>
#include <cstring>
#include <libheif/heif.h>
#include <memory>
#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcHeif, "com.velmora.app.HeifReader", QtInfoMsg)

/// The functions of the library, as far as they are used here.
struct Heif {
    /// Null if the library is not there or too old.
    static const Heif *instance()
    {
        static const Heif heif;
        return heif.isComplete ? &heif : nullptr;
    }

    template<typename Type>
    Type *load(const char *name)
    {
        auto *const function = reinterpret_cast<Type *>(library.resolve(name));
        if (function == nullptr && std::exchange(isComplete, false)) {
            qCInfo(lcHeif) << "HEIC images cannot be read:" << library.errorString();
        }
        return function;
    }

    QLibrary library{QStringLiteral("heif"), 1};
    bool isComplete = true;

// A name that is declared. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define VELMORA_HEIF(name) decltype(&heif_##name) name = load<decltype(heif_##name)>("heif_" #name)
    VELMORA_HEIF(context_alloc);
    VELMORA_HEIF(context_free);
    VELMORA_HEIF(context_read_from_file);
    VELMORA_HEIF(context_get_primary_image_handle);
    VELMORA_HEIF(image_handle_release);
    VELMORA_HEIF(image_handle_get_width);
    VELMORA_HEIF(image_handle_get_height);
    VELMORA_HEIF(image_handle_has_alpha_channel);
    VELMORA_HEIF(image_handle_get_luma_bits_per_pixel);
    VELMORA_HEIF(image_handle_get_raw_color_profile_size);
    VELMORA_HEIF(image_handle_get_raw_color_profile);
    VELMORA_HEIF(image_handle_get_nclx_color_profile);
    VELMORA_HEIF(nclx_color_profile_free);
    VELMORA_HEIF(decode_image);
    VELMORA_HEIF(image_get_width);
    VELMORA_HEIF(image_get_height);
    VELMORA_HEIF(image_get_plane_readonly);
    VELMORA_HEIF(image_release);
#undef VELMORA_HEIF
};

using Context = std::unique_ptr<heif_context, decltype(&heif_context_free)>;
using Handle = std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)>;
using Decoded = std::unique_ptr<heif_image, decltype(&heif_image_release)>;

bool isFine(const heif_error &error)
{
    return error.code == heif_error_Ok;
}

QColorSpace colorSpace(const Heif &heif, const heif_image_handle *handle)
{
    QByteArray profile(static_cast<qsizetype>(heif.image_handle_get_raw_color_profile_size(handle)),
                       '\0');
    if (!profile.isEmpty() &&
        isFine(heif.image_handle_get_raw_color_profile(handle, profile.data()))) {
        return QColorSpace::fromIccProfile(profile);
    }
    // Without a profile, numbers tell the primaries. Phones use these two.
    heif_color_profile_nclx *raw = nullptr;
    if (!isFine(heif.image_handle_get_nclx_color_profile(handle, &raw))) {
        return {};
    }
    const std::unique_ptr<heif_color_profile_nclx, decltype(heif.nclx_color_profile_free)> nclx(
        raw, heif.nclx_color_profile_free);
    const bool isDisplayP3 = nclx->color_primaries == heif_color_primaries_SMPTE_EG_432_1;
    return QColorSpace(isDisplayP3 ? QColorSpace::DisplayP3 : QColorSpace::SRgb);
}

/// Samples of `bits` bits in 16 become samples of 16 bits, white staying white.
void widen(quint16 *samples, qsizetype count, int bits)
{
    const auto most = static_cast<quint32>((1 << bits) - 1);
    std::transform(samples, samples + count, samples, [most](quint16 sample) {
        return static_cast<quint16>(std::min<quint32>(sample, most) * 0xFFFFU / most);
    });
}

QImage toImage(const Heif &heif, const heif_image *decoded, int bits, bool hasAlpha)
{
    const int width = heif.image_get_width(decoded, heif_channel_interleaved);
    const int height = heif.image_get_height(decoded, heif_channel_interleaved);
    int stride = 0;
    const std::uint8_t *const plane =
        heif.image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    if (plane == nullptr || width <= 0 || height <= 0) {
        return {};
    }
    const bool isDeep = bits > 8;
    const auto narrow = hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888;
    const auto wide = hasAlpha ? QImage::Format_RGBA64 : QImage::Format_RGBX64;
    QImage image(width, height, isDeep ? wide : narrow);
    if (image.isNull()) {
        return {};
    }
    const auto rowBytes = static_cast<std::size_t>(width) * (isDeep ? 8 : 4);
    for (int y = 0; y < height; ++y) {
        uchar *const row = image.scanLine(y);
        std::memcpy(row, plane + static_cast<qsizetype>(y) * stride, rowBytes);
        if (isDeep) {
            widen(reinterpret_cast<quint16 *>(row), qsizetype{4} * width, bits);
        }
    }
    return image;
}

} // namespace

QImage readHeif(const QByteArray &path, qint64 mostPixels)
{
    const Heif *const heif = Heif::instance();
    if (heif == nullptr) {
        return {};
    }
    const Context context(heif->context_alloc(), heif->context_free);
    heif_image_handle *rawHandle = nullptr;
    if (!isFine(heif->context_read_from_file(context.get(), path.constData(), nullptr)) ||
        !isFine(heif->context_get_primary_image_handle(context.get(), &rawHandle))) {
        return {};
    }
    const Handle handle(rawHandle, heif->image_handle_release);
    const int bits = heif->image_handle_get_luma_bits_per_pixel(handle.get());
    const qint64 pixels = qint64{heif->image_handle_get_width(handle.get())} *
                          heif->image_handle_get_height(handle.get());
    if (bits < 1 || bits > 16 || pixels > mostPixels) {
        return {};
    }
    // Colours that do not matter to an opaque image are filled in by the library.
    const bool isDeep = bits > 8;
    heif_image *rawImage = nullptr;
    const heif_error error = heif->decode_image(
        handle.get(), &rawImage, heif_colorspace_RGB,
        isDeep ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RGBA, nullptr);
    const Decoded decoded(rawImage, heif->image_release);
    if (!isFine(error)) {
        return {};
    }
    QImage image = toImage(*heif, decoded.get(), bits,
                           heif->image_handle_has_alpha_channel(handle.get()) != 0);
    image.setColorSpace(colorSpace(*heif, handle.get()));
    return image;
}

} // namespace velmora
