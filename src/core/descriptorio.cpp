#include "core/descriptorio.h"

#include <QByteArray>

#include <cerrno>

#include <unistd.h>

namespace valtrona::files::detail {

bool writeAll(int fd, QByteArrayView bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, size_t(bytes.size() - done));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        done += written;
    }
    return true;
}

bool copyContent(int from, int to)
{
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    off_t offset = 0;
    for (;;) {
        const ssize_t got = ::pread(from, buffer.data(), size_t(buffer.size()), offset);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (got == 0)
            return true;
        if (!writeAll(to, QByteArrayView(buffer.constData(), got)))
            return false;
        offset += got;
    }
}

} // namespace valtrona::files::detail
