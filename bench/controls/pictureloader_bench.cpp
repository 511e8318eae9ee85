// How long the picture view's loader takes to read a large JPEG at the
// sizes a preview shows it at, against reading it whole.
//
// Usage: pictureloader_bench [photo.jpg]
// When the file does not exist (or none is named) a 40-megapixel
// photo-like JPEG (7296 x 5472) is made there (or in a temporary
// directory) first. Each row is read 7 times; the median wall time and the
// median CPU time of the process are reported, so a busy machine shows as
// a gap between the two.

#include <algorithm>
#include <ctime>
#include <cstdio>
#include <vector>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>

#include "controls/pictureloader.h"
#include "support/benchphoto.h"

using namespace valtrona;

namespace {

struct Timing
{
    double wallMs = -1.0;
    double cpuMs = -1.0;
};

Timing medianMs(const QString &path, QSize shown)
{
    QtPictureLoader loader;
    std::vector<double> runs;
    std::vector<double> cpu;
    for (int i = 0; i < 7; ++i) {
        QElapsedTimer timer;
        timer.start();
        const std::clock_t cpuStart = std::clock();
        const ShownSizeFunction size = shown.isValid()
            ? ShownSizeFunction([shown](const QSize &own) { return own.scaled(shown, Qt::KeepAspectRatio); })
            : ShownSizeFunction();
        const LoadedPicture picture = loader.load(path, size);
        runs.push_back(timer.nsecsElapsed() / 1e6);
        cpu.push_back(double(std::clock() - cpuStart) * 1000.0 / CLOCKS_PER_SEC);
        if (picture.image.isNull()) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return {};
        }
    }
    std::sort(runs.begin(), runs.end());
    std::sort(cpu.begin(), cpu.end());
    return {runs[runs.size() / 2], cpu[cpu.size() / 2]};
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QTemporaryDir dir;
    const QString path = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                  : dir.filePath(QStringLiteral("photo40mp.jpg"));
    if (!QFile::exists(path))
        bench::makePhoto(path, QSize(7296, 5472));

    const QSize rows[] = {{160, 120}, {320, 240}, {640, 480}, {1280, 960}, {1920, 1440}, {}};
    std::printf("%-14s %12s %12s\n", "shown size", "wall ms", "cpu ms");
    for (const QSize &shown : rows) {
        const QByteArray label = shown.isValid()
            ? QByteArray::number(shown.width()) + 'x' + QByteArray::number(shown.height())
            : QByteArray("full size");
        const Timing timing = medianMs(path, shown);
        std::printf("%-14s %12.1f %12.1f\n", label.constData(), timing.wallMs, timing.cpuMs);
    }
    return 0;
}
