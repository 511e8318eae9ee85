#include "support/benchphoto.h"

#include <QColor>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QRandomGenerator>

namespace valtrona::bench {

void makePhoto(const QString &path, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, image.width(), image.height());
    gradient.setColorAt(0.0, QColor(30, 90, 160));
    gradient.setColorAt(0.5, QColor(220, 190, 120));
    gradient.setColorAt(1.0, QColor(40, 110, 50));
    painter.fillRect(image.rect(), gradient);
    painter.end();
    QRandomGenerator random(4711);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int n = int(random.bounded(24u)) - 12;
            line[x] = qRgb(qBound(0, qRed(line[x]) + n, 255), qBound(0, qGreen(line[x]) + n, 255),
                           qBound(0, qBlue(line[x]) + n, 255));
        }
    }
    image.save(path, "JPEG", 90);
}

} // namespace valtrona::bench
