// How long the source list takes to take in a few hundred camera photos:
// each row gets its file size and its pixel size, read from the header only.
//
// Usage: addsources_bench [count] [photo.jpg]
// A 24-megapixel photo-like JPEG is made (or the named one used) and linked
// under `count` names (default 300) in a temporary directory, so every row
// is a distinct path. The list is filled 5 times; the median wall time is
// reported in total and per file. The files are in the OS cache after the
// first round; a cold disk adds one small header read per file.

#include <algorithm>
#include <cstdio>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include "app/sourcelist.h"
#include "imaging/imaging.h"
#include "support/benchphoto.h"

using namespace valtrona;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, atoi(argv[1])) : 300;
    QTemporaryDir dir;
    QString photo = argc > 2 ? QString::fromLocal8Bit(argv[2]) : dir.filePath(QStringLiteral("photo.jpg"));
    if (!QFile::exists(photo))
        bench::makePhoto(photo, QSize(6000, 4000));

    QStringList paths;
    for (int i = 1; i <= count; ++i) {
        const QString name = dir.filePath(QStringLiteral("IMG_%1.jpg").arg(i, 5, 10, QLatin1Char('0')));
        if (!QFile::link(photo, name) && !QFile::copy(photo, name))
            return 1;
        paths.append(name);
    }

    if (!imaging::start())
        return 1;
    SourceList list;
    list.setMeasure([](const QString &path) { return imaging::measure(path).value_or(QSize(0, 0)); });
    list.setRestart([] { imaging::restart(); });

    std::vector<double> times;
    for (int round = 0; round < 5; ++round) {
        list.removeAll();
        QElapsedTimer timer;
        timer.start();
        list.addSourceFiles(paths);
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    std::printf("%d photos of %s: median %.1f ms in total, %.3f ms per file (%s)\n", count,
                qPrintable(list.topLevelItem(0)->text(SourceList::DimensionColumn)), median, median / count,
                qPrintable(list.topLevelItem(0)->text(SourceList::SizeColumn)));
    imaging::stop();
    return 0;
}
