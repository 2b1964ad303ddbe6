#pragma once

#include "platform/FileActions.h"

namespace velmora
{

/// What an image is to be written as.
struct ImageEncoding {
    QByteArray format = "png";     ///< or "jpeg", "tiff", "bmp"
    std::optional<double> quality; ///< 0 to 1; where the format knows such a thing
};

struct ImageOutcome {
    enum class Result {
        Written,
        Skipped, ///< not an image that can be read, too large, or not to be written in this format
        Failed,  ///< the file could not be written
    };

    Result result = Result::Skipped;
    QString error; ///< where it failed, for the user to read
};

/// Writes images anew in another format. Calls return at once; the answer comes once, on the main
/// loop, never inside the call, and not any more once this object is gone.
class ImageConverter
{
public:
    using Done = std::function<void(const ImageOutcome &outcome)>;

    ImageConverter() = default;
    ImageConverter(const ImageConverter &) = delete;
    ImageConverter &operator=(const ImageConverter &) = delete;
    virtual ~ImageConverter() = default;

    /// Reads the source, whatever its name says it is, and writes it beside or under the first name
    /// of the rule for the target that is free. Images stand upright in what is written.
    virtual void convert(const QUrl &source, const ImageEncoding &encoding, const QUrl &target,
                         NameRule rule, Done done) = 0;
};

} // namespace velmora
