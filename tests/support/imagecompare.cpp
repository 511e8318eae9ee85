#include "support/imagecompare.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace valtrona::test {

namespace {

bool sameGeometry(const PixelBuffer &a, const PixelBuffer &b)
{
    return a.width == b.width && a.height == b.height && a.channels == b.channels
        && a.bytes.size() == qsizetype(a.width) * a.height * a.channels
        && b.bytes.size() == a.bytes.size();
}

int value(const PixelBuffer &image, qsizetype index)
{
    return static_cast<unsigned char>(image.bytes.at(index));
}

} // namespace

::testing::AssertionResult imagesClose(const PixelBuffer &actual, const PixelBuffer &expected,
                                       int maxDifference, double maxMean)
{
    if (!sameGeometry(actual, expected)) {
        return ::testing::AssertionFailure()
               << "geometry " << actual.width << "x" << actual.height << "x" << actual.channels
               << " (" << actual.bytes.size() << " bytes) vs expected " << expected.width << "x"
               << expected.height << "x" << expected.channels << " (" << expected.bytes.size()
               << " bytes)";
    }
    double total = 0;
    qsizetype firstBad = -1;
    for (qsizetype i = 0; i < actual.bytes.size(); ++i) {
        const int difference = std::abs(value(actual, i) - value(expected, i));
        total += difference;
        if (difference > maxDifference && firstBad < 0)
            firstBad = i;
    }
    const double mean = actual.bytes.isEmpty() ? 0.0 : total / double(actual.bytes.size());
    if (firstBad < 0 && mean <= maxMean)
        return ::testing::AssertionSuccess();

    ::testing::AssertionResult result = ::testing::AssertionFailure();
    result << "mean difference " << mean << " (allowed " << maxMean << ")";
    if (firstBad >= 0) {
        const qsizetype pixel = firstBad / actual.channels;
        result << "; first pixel off by more than " << maxDifference << " at (" << pixel % actual.width
               << ", " << pixel / actual.width << ") channel " << firstBad % actual.channels << ": "
               << value(actual, firstBad) << " vs expected " << value(expected, firstBad);
    }
    return result;
}

double psnr(const PixelBuffer &a, const PixelBuffer &b)
{
    if (!sameGeometry(a, b) || a.bytes.isEmpty())
        return 0.0;
    double squares = 0;
    for (qsizetype i = 0; i < a.bytes.size(); ++i) {
        const double difference = value(a, i) - value(b, i);
        squares += difference * difference;
    }
    if (squares == 0)
        return std::numeric_limits<double>::infinity();
    const double mse = squares / double(a.bytes.size());
    return 10.0 * std::log10(255.0 * 255.0 / mse);
}

} // namespace valtrona::test
