#include "platform/linux/files/HeifReader.h"

#include <QColorSpace>
#include <QLibrary>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <cstring>
#include <libheif/heif.h>
#include <memory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcHeif, "com.velmora.app.HeifReader", QtInfoMsg)

/// The functions of the library, as far as they are used here.
struct Heif {
    Heif()
        : library(QStringLiteral("heif"), 1)
    {
        load(contextAlloc, "heif_context_alloc");
        load(contextFree, "heif_context_free");
        load(readFile, "heif_context_read_from_file");
        load(primaryImage, "heif_context_get_primary_image_handle");
        load(handleRelease, "heif_image_handle_release");
        load(handleWidth, "heif_image_handle_get_width");
        load(handleHeight, "heif_image_handle_get_height");
        load(hasAlpha, "heif_image_handle_has_alpha_channel");
        load(bits, "heif_image_handle_get_luma_bits_per_pixel");
        load(profileSize, "heif_image_handle_get_raw_color_profile_size");
        load(profile, "heif_image_handle_get_raw_color_profile");
        load(nclx, "heif_image_handle_get_nclx_color_profile");
        load(nclxFree, "heif_nclx_color_profile_free");
        load(decode, "heif_decode_image");
        load(width, "heif_image_get_width");
        load(height, "heif_image_get_height");
        load(plane, "heif_image_get_plane_readonly");
        load(imageRelease, "heif_image_release");
        if (!isComplete) {
            qCInfo(lcHeif) << "HEIC images cannot be read:" << library.errorString();
        }
    }

    /// Null if the library is not there or too old.
    static const Heif *instance()
    {
        static const Heif heif;
        return heif.isComplete ? &heif : nullptr;
    }

    template<typename Function>
    void load(Function *&function, const char *name)
    {
        function = reinterpret_cast<Function *>(library.resolve(name));
        isComplete = isComplete && function != nullptr;
    }

    QLibrary library;
    bool isComplete = true;

    decltype(&heif_context_alloc) contextAlloc{};
    decltype(&heif_context_free) contextFree{};
    decltype(&heif_context_read_from_file) readFile{};
    decltype(&heif_context_get_primary_image_handle) primaryImage{};
    decltype(&heif_image_handle_release) handleRelease{};
    decltype(&heif_image_handle_get_width) handleWidth{};
    decltype(&heif_image_handle_get_height) handleHeight{};
    decltype(&heif_image_handle_has_alpha_channel) hasAlpha{};
    decltype(&heif_image_handle_get_luma_bits_per_pixel) bits{};
    decltype(&heif_image_handle_get_raw_color_profile_size) profileSize{};
    decltype(&heif_image_handle_get_raw_color_profile) profile{};
    decltype(&heif_image_handle_get_nclx_color_profile) nclx{};
    decltype(&heif_nclx_color_profile_free) nclxFree{};
    decltype(&heif_decode_image) decode{};
    decltype(&heif_image_get_width) width{};
    decltype(&heif_image_get_height) height{};
    decltype(&heif_image_get_plane_readonly) plane{};
    decltype(&heif_image_release) imageRelease{};
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
    QByteArray profile(static_cast<qsizetype>(heif.profileSize(handle)), '\0');
    if (!profile.isEmpty() && isFine(heif.profile(handle, profile.data()))) {
        return QColorSpace::fromIccProfile(profile);
    }
    // Without a profile, numbers tell the primaries. Phones use these two.
    heif_color_profile_nclx *raw = nullptr;
    if (!isFine(heif.nclx(handle, &raw))) {
        return {};
    }
    const std::unique_ptr<heif_color_profile_nclx, decltype(heif.nclxFree)> nclx(raw,
                                                                                 heif.nclxFree);
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
    const int width = heif.width(decoded, heif_channel_interleaved);
    const int height = heif.height(decoded, heif_channel_interleaved);
    int stride = 0;
    const std::uint8_t *const plane = heif.plane(decoded, heif_channel_interleaved, &stride);
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

bool looksLikeHeif(const QByteArray &start)
{
    static constexpr std::array brands{"heic", "heix", "hevc", "hevx", "heim",
                                       "heis", "mif1", "msf1", "avif"};
    const QByteArray brand = start.mid(8, 4);
    return start.mid(4, 4) == "ftyp" &&
           std::find(brands.begin(), brands.end(), brand) != brands.end();
}

QImage readHeif(const QByteArray &path, qint64 mostPixels)
{
    const Heif *const heif = Heif::instance();
    if (heif == nullptr) {
        return {};
    }
    const Context context(heif->contextAlloc(), heif->contextFree);
    heif_image_handle *rawHandle = nullptr;
    if (!isFine(heif->readFile(context.get(), path.constData(), nullptr)) ||
        !isFine(heif->primaryImage(context.get(), &rawHandle))) {
        return {};
    }
    const Handle handle(rawHandle, heif->handleRelease);
    const int bits = heif->bits(handle.get());
    const qint64 pixels =
        qint64{heif->handleWidth(handle.get())} * heif->handleHeight(handle.get());
    if (bits < 1 || bits > 16 || pixels > mostPixels) {
        return {};
    }
    // Colours that do not matter to an opaque image are filled in by the library.
    const bool isDeep = bits > 8;
    heif_image *rawImage = nullptr;
    const heif_error error = heif->decode(
        handle.get(), &rawImage, heif_colorspace_RGB,
        isDeep ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RGBA, nullptr);
    const Decoded decoded(rawImage, heif->imageRelease);
    if (!isFine(error)) {
        return {};
    }
    QImage image = toImage(*heif, decoded.get(), bits, heif->hasAlpha(handle.get()) != 0);
    image.setColorSpace(colorSpace(*heif, handle.get()));
    return image;
}

} // namespace velmora
