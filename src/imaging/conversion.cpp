#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/imaging_p.h"
#include "imaging/jpegheader.h"

#include "core/targetfolder.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vips/vips8>

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

namespace {

// How strictly the decoders treat damaged data. libjpeg reports corrupt
// entropy data (a bad Huffman code, a scan that ends early) and a frame
// header that claims more lines than the data holds only as warnings, so
// JPEGs are decoded failing on warnings. That also refuses files with stray
// bytes between header segments or between progressive scans, which the
// library does not tell apart from real damage (stray bytes before the end
// marker of a baseline JPEG are never read). The other decoders (PNG, GIF,
// TIFF, WebP) report damaged data as errors, so they fail on errors and
// cut-off files and let mere warnings pass.
constexpr VipsFailOn kJpegFailOn = VIPS_FAIL_ON_WARNING;
constexpr VipsFailOn kFailOn = VIPS_FAIL_ON_ERROR;

// libjpeg's largest frame side.
constexpr int kMaxJpegSide = 65500;

bool isRequested(const std::atomic_bool *flag)
{
    return flag != nullptr && flag->load(std::memory_order_relaxed);
}

Error cancelledError()
{
    return {ErrorCode::Internal, u"cancelled"_s};
}

QString libraryMessage(const vips::VError &error)
{
    vips_error_clear();
    return QString::fromUtf8(error.what()).trimmed();
}

bool procFileSystemPresent()
{
    static const bool present = ::access("/proc/self/fd", F_OK) == 0;
    return present;
}

// A source file, opened once by us: the error codes come from the system's
// own answer, and every later read reaches this very file, whatever happens
// to its name meanwhile. The library reads it through sources of its own
// (each with its own position) or, for loaders that only take names,
// through the descriptor's name under /proc.
class SourceFile
{
public:
    explicit SourceFile(const std::atomic_bool *cancel) : m_cancel(cancel) {}
    ~SourceFile()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    SourceFile(const SourceFile &) = delete;
    SourceFile &operator=(const SourceFile &) = delete;

    [[nodiscard]] Expected<void, Error> open(const QString &path)
    {
        m_path = path;
        const QByteArray native = QFile::encodeName(path);
        // Opened without waiting: a pipe at the name must not block.
        do {
            m_fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        } while (m_fd < 0 && errno == EINTR);
        if (m_fd < 0)
            return unexpected(sourceError(errno, path));
        struct stat info {};
        if (::fstat(m_fd, &info) != 0)
            return unexpected(sourceError(errno, path));
        if (!S_ISREG(info.st_mode))
            return unexpected(Error {ErrorCode::SourceUnreadable, u"not a regular file: "_s + path});
        ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) & ~O_NONBLOCK);
        m_size = qint64(info.st_size);
        return {};
    }

    int descriptor() const { return m_fd; }
    qint64 size() const { return m_size; }
    bool cancelRequested() const { return isRequested(m_cancel); }

    /// The errno of a failed read, 0 when none failed.
    int readErrno() const { return m_readErrno.load(); }
    Error readError() const { return sourceError(readErrno(), m_path); }

    /// A new library source over the file, reading from its start.
    vips::VSource newSource();

    /// A name the library can open the same file by; empty when there is
    /// none (the library would read a trailing "[...]" as options).
    QByteArray libraryName() const
    {
        if (procFileSystemPresent())
            return "/proc/self/fd/" + QByteArray::number(m_fd);
        const QByteArray name = QFile::encodeName(m_path);
        return detail::nameIsSafeForLibrary(name) ? name : QByteArray();
    }

private:
    struct Reader
    {
        SourceFile *file;
        qint64 position = 0;
    };

    static gint64 read(VipsSourceCustom *, void *buffer, gint64 length, Reader *reader);
    static gint64 seek(VipsSourceCustom *, gint64 offset, int whence, Reader *reader);

    const std::atomic_bool *m_cancel;
    QString m_path;
    int m_fd = -1;
    qint64 m_size = 0;
    std::atomic<int> m_readErrno {0};
};

gint64 SourceFile::read(VipsSourceCustom *, void *buffer, gint64 length, Reader *reader)
{
    SourceFile &file = *reader->file;
    // A stop request ends the decoding at its next read.
    if (file.cancelRequested())
        return -1;
    for (;;) {
        const ssize_t got = ::pread(file.m_fd, buffer, size_t(length), off_t(reader->position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            file.m_readErrno.store(errno);
            return -1;
        }
        reader->position += got;
        return got;
    }
}

gint64 SourceFile::seek(VipsSourceCustom *, gint64 offset, int whence, Reader *reader)
{
    qint64 base = 0;
    if (whence == SEEK_CUR) {
        base = reader->position;
    } else if (whence == SEEK_END) {
        struct stat info {};
        if (::fstat(reader->file->m_fd, &info) != 0)
            return -1;
        base = qint64(info.st_size);
    } else if (whence != SEEK_SET) {
        return -1;
    }
    if (base + offset < 0)
        return -1;
    reader->position = base + offset;
    return reader->position;
}

vips::VSource SourceFile::newSource()
{
    VipsSourceCustom *custom = vips_source_custom_new();
    auto *reader = new Reader {this};
    auto freeReader = [](gpointer data, GClosure *) { delete static_cast<Reader *>(data); };
    g_signal_connect_data(custom, "read", G_CALLBACK(&SourceFile::read), reader, freeReader, GConnectFlags(0));
    g_signal_connect(custom, "seek", G_CALLBACK(&SourceFile::seek), reader);
    return vips::VSource(VIPS_SOURCE(custom));
}

// The loader the library picked for a file: by its content, never by a name.
struct Loader
{
    QByteArray name;         ///< the library's nickname ("jpegload_source", "magickload", ...)
    bool fromSource = false; ///< reads through a source; otherwise only by file name

    bool isJpeg() const { return name.startsWith("jpegload"); }
    bool isPng() const { return name.startsWith("pngload"); }
};

QByteArray nicknameOf(const char *typeName)
{
    const char *nickname = vips_nickname_find(g_type_from_name(typeName));
    return nickname != nullptr ? QByteArray(nickname) : QByteArray(typeName);
}

Expected<Loader, Error> findLoader(SourceFile &file)
{
    for (;;) {
        const bool allFormats = detail::formatModulesLoaded();
        if (const char *type = vips_foreign_find_load_source(file.newSource().get_source()))
            return Loader {nicknameOf(type), true};
        vips_error_clear();
        if (file.readErrno() != 0)
            return unexpected(file.readError());
        // Some loaders (BMP and other formats behind ImageMagick) only take
        // file names.
        const QByteArray name = file.libraryName();
        if (const char *type = name.isEmpty() ? nullptr : vips_foreign_find_load(name.constData()))
            return Loader {nicknameOf(type), false};
        vips_error_clear();
        // Perhaps one of the modules' formats.
        if (allFormats)
            return unexpected(Error {ErrorCode::UnknownFormat, {}});
        detail::loadFormatModules();
    }
}

// Opens an image lazily for one top-to-bottom read: only the header is read
// here. shrink > 1 is for JPEG only.
Expected<vips::VImage, Error> openImage(SourceFile &file, const Loader &loader, VipsFailOn failOn, int shrink = 1)
{
    vips::VOption *options = vips::VImage::option()
                                 ->set("access", VIPS_ACCESS_SEQUENTIAL)
                                 ->set("fail_on", int(failOn));
    if (shrink > 1)
        options->set("shrink", shrink);
    try {
        vips::VImage image = loader.fromSource
                                 ? vips::VImage::new_from_source(file.newSource(), "", options)
                                 : vips::VImage::new_from_file(file.libraryName().constData(), options);
        if (image.width() < 1 || image.height() < 1)
            return unexpected(Error {ErrorCode::Damaged, u"image without pixels"_s});
        return image;
    } catch (const vips::VError &error) {
        const QString message = libraryMessage(error);
        if (file.readErrno() != 0)
            return unexpected(file.readError());
        if (file.cancelRequested())
            return unexpected(cancelledError());
        return unexpected(Error {ErrorCode::Damaged, message});
    }
}

bool headerFlag(const vips::VImage &image, const char *name)
{
    int value = 0;
    return vips_image_get_typeof(image.get_image(), name) != 0
           && vips_image_get_int(image.get_image(), name, &value) == 0 && value != 0;
}

QByteArray headerString(const vips::VImage &image, const char *name)
{
    const char *value = nullptr;
    if (vips_image_get_typeof(image.get_image(), name) == 0
        || vips_image_get_string(image.get_image(), name, &value) != 0 || value == nullptr)
        return {};
    return QByteArray(value);
}

qint64 roundUp(qint64 value, qint64 step)
{
    return (value + step - 1) / step * step;
}

// What the decoder of `loader` holds beyond its streaming buffers, from the
// header alone.
qint64 wholeImageBytes(const vips::VImage &image, const Loader &loader, qint64 fileSize)
{
    const qint64 width = image.width();
    const qint64 height = image.height();
    const qint64 bands = image.bands();
    const qint64 pixelBytes = width * height * bands * qint64(vips_format_sizeof(image.format()));
    if (loader.isJpeg()) {
        // Baseline JPEGs stream. A progressive (multi-scan) one keeps every
        // DCT coefficient of the picture until its last scan is read: 64
        // two-byte values per 8 x 8 block and component, chroma at a quarter
        // (4:2:0) or half (4:2:2) of the luma blocks unless it is 4:4:4.
        if (!headerFlag(image, "jpeg-multiscan"))
            return 0;
        const qint64 lumaBytes = roundUp(width, 16) * roundUp(height, 16) * 2;
        const bool fullChroma = headerString(image, "jpeg-chroma-subsample") == "4:4:4";
        return lumaBytes + (bands - 1) * (fullChroma ? lumaBytes : lumaBytes / 2);
    }
    if (loader.isPng()) {
        // Interlaced (Adam7) PNGs are decoded whole, then handed out.
        return headerFlag(image, "interlaced") ? pixelBytes + height * qint64(sizeof(void *)) : 0;
    }
    if (loader.name.startsWith("gifload") || loader.name.startsWith("webpload")) {
        // The whole file in memory, the decoder's RGBA frame and the
        // library's copy of it.
        return fileSize + 2 * width * height * 4;
    }
    if (loader.name.startsWith("tiffload")) {
        // A TIFF may hold its picture in a single strip, which is read
        // (compressed) and decoded whole.
        return fileSize + pixelBytes;
    }
    if (loader.name.startsWith("heifload")) {
        // The whole file, the decoded planes and their RGB conversion.
        return fileSize + 4 * width * height * std::max<qint64>(bands, 3) * qint64(vips_format_sizeof(image.format()));
    }
    if (loader.name.startsWith("magickload")) {
        // The module's own picture (four 16-bit channels, or floats) besides ours.
        return fileSize + width * height * 16 + pixelBytes;
    }
    // Anything else is assumed to decode whole, from a file held whole.
    return fileSize + pixelBytes;
}

// ---- The output --------------------------------------------------------------

// Takes the encoder's bytes and writes them into the pending file as they
// come. A JPEG gets the plain JFIF segment after its start marker (the
// encoder writes none once metadata is stripped) and, when asked, the
// source's EXIF header block in place of that start marker; the first bytes
// are held back until that can be decided.
class OutputWriter
{
public:
    OutputWriter(files::PendingFile &file, bool jpeg, QByteArray exifHeader, const std::atomic_bool *cancel)
        : m_file(file), m_jpeg(jpeg), m_exifHeader(std::move(exifHeader)), m_cancel(cancel)
    {
    }

    /// A custom target that writes through this writer.
    vips::VTarget newTarget()
    {
        VipsTargetCustom *custom = vips_target_custom_new();
        g_signal_connect(custom, "write", G_CALLBACK(&OutputWriter::onWrite), this);
        g_signal_connect(custom, "end", G_CALLBACK(&OutputWriter::onEnd), this);
        return vips::VTarget(VIPS_TARGET(custom));
    }

    /// Checks what can only be checked once everything is written.
    [[nodiscard]] Expected<void, Error> finish()
    {
        if (m_error)
            return unexpected(*m_error);
        if (!m_released && !release())
            return unexpected(*m_error);
        // The EXIF block goes only in front of a whole JPEG, one that ends
        // with its end marker.
        if (m_exifCarried && !(m_tail[0] == char(0xFF) && m_tail[1] == char(0xD9)))
            return unexpected(Error {ErrorCode::Internal, u"encoder output does not end with an end marker"_s});
        return {};
    }

    const std::optional<Error> &error() const { return m_error; }
    bool cancelled() const { return m_cancelled; }

private:
    // Bytes of the encoded file held back before the header decision: the
    // start marker and the next segment's marker and identifier.
    static constexpr qsizetype kHeadLength = 10;

    static gint64 onWrite(VipsTargetCustom *, const void *data, gint64 length, OutputWriter *writer)
    {
        return writer->write(QByteArrayView(static_cast<const char *>(data), qsizetype(length))) ? length : -1;
    }

    static int onEnd(VipsTargetCustom *, OutputWriter *writer)
    {
        if (!writer->m_released && !writer->release())
            return -1;
        return 0;
    }

    bool write(QByteArrayView bytes)
    {
        if (isRequested(m_cancel)) {
            m_cancelled = true;
            return false;
        }
        if (m_released)
            return put(bytes);
        if (!m_jpeg) {
            m_released = true;
            return put(bytes);
        }
        const qsizetype taken = std::min(bytes.size(), kHeadLength - m_head.size());
        m_head.append(bytes.first(taken));
        if (m_head.size() < kHeadLength)
            return true;
        return release() && put(bytes.sliced(taken));
    }

    // Writes the held-back start of the file: the JFIF segment put in as
    // every saved JPEG gets it, and the EXIF block in place of the start
    // marker where writeExif() would put it (a JFIF or plain JPEG target).
    bool release()
    {
        m_released = true;
        QByteArray start = m_head;
        if (m_jpeg && start.size() >= 4 && start.startsWith("\xff\xd8")
            && static_cast<unsigned char>(start.at(3)) != 0xE0)
            start = start.left(2) + detail::jfifSegment() + start.mid(2);
        if (!m_exifHeader.isEmpty()) {
            const int kind = parseJpegHeader(start, false).kind;
            if (kind == 1 || kind == 3) {
                start = m_exifHeader + start.mid(2);
                m_exifCarried = true;
            }
        }
        return put(start);
    }

    bool put(QByteArrayView bytes)
    {
        if (bytes.isEmpty())
            return true;
        if (auto written = m_file.write(bytes); !written) {
            m_error = written.error();
            return false;
        }
        if (bytes.size() >= 2) {
            m_tail[0] = bytes.at(bytes.size() - 2);
            m_tail[1] = bytes.at(bytes.size() - 1);
        } else {
            m_tail[0] = m_tail[1];
            m_tail[1] = bytes.at(0);
        }
        return true;
    }

    files::PendingFile &m_file;
    const bool m_jpeg;
    const QByteArray m_exifHeader;
    const std::atomic_bool *m_cancel;
    QByteArray m_head;
    bool m_released = false;
    bool m_exifCarried = false;
    bool m_cancelled = false;
    char m_tail[2] = {0, 0};
    std::optional<Error> m_error;
};

// Stops the pipeline computing `image` once a stop is requested.
void stopOnCancel(const vips::VImage &image, const std::atomic_bool *cancel)
{
    if (cancel == nullptr)
        return;
    vips_image_set_progress(image.get_image(), TRUE);
    auto onEval = [](VipsImage *evaluated, VipsProgress *, gpointer flag) {
        if (isRequested(static_cast<const std::atomic_bool *>(flag)))
            vips_image_set_kill(evaluated, TRUE);
    };
    g_signal_connect(image.get_image(), "eval", G_CALLBACK(+onEval), const_cast<std::atomic_bool *>(cancel));
}

// The source drawn at the request's size, as a lazy pipeline ready for the
// encoder.
Expected<vips::VImage, Error> drawingPipeline(SourceFile &file, const DrawRequest &request)
{
    auto loader = findLoader(file);
    if (!loader)
        return unexpected(loader.error());
    auto image = openImage(file, *loader, kFailOn);
    if (!image)
        return image;
    if (loader->isJpeg()) {
        // Reopened, failing on warnings and shrinking while decoding as far
        // as the target allows.
        int shrink = 1;
        if (detail::shrinksOnLoad(request.modes)) {
            shrink = detail::jpegShrinkFor(std::min(double(image->width()) / request.width,
                                                    double(image->height()) / request.height));
        }
        image = openImage(file, *loader, kJpegFailOn, shrink);
        if (!image)
            return image;
    }
    try {
        return detail::encoderInput(detail::resample(detail::toSrgb8(*image), request.width, request.height,
                                                     request.modes),
                                    request.format == OutputFormat::Jpeg);
    } catch (const vips::VError &error) {
        return unexpected(Error {ErrorCode::Internal, libraryMessage(error)});
    }
}

} // namespace

Expected<SourceInfo, Error> inspect(const QString &path)
{
    if (!isStarted())
        return unexpected(Error {ErrorCode::Internal, u"the imaging layer is not started"_s});
    SourceFile file(nullptr);
    if (auto opened = file.open(path); !opened)
        return unexpected(opened.error());
    auto loader = findLoader(file);
    if (!loader)
        return unexpected(loader.error());
    auto image = openImage(file, *loader, kFailOn);
    if (!image)
        return unexpected(image.error());
    SourceInfo info;
    info.width = image->width();
    info.height = image->height();
    info.bands = image->bands();
    info.sampleBytes = int(vips_format_sizeof(image->format()));
    info.hasAlpha = image->has_alpha();
    info.shrinksWhileDecoding = loader->isJpeg();
    info.decodeBytes = wholeImageBytes(*image, *loader, file.size());
    return info;
}

qint64 drawMemory(const SourceInfo &info, int width, int height, const DrawModes &modes, OutputFormat format)
{
    const qint64 sourceWidth = std::max(info.width, 1);
    const qint64 sourceHeight = std::max(info.height, 1);
    const qint64 targetWidth = std::max(width, 1);
    const qint64 targetHeight = std::max(height, 1);
    int shrink = 1;
    if (info.shrinksWhileDecoding && detail::shrinksOnLoad(modes))
        shrink = detail::jpegShrinkFor(std::min(double(sourceWidth) / targetWidth,
                                                double(sourceHeight) / targetHeight));
    const qint64 decodedWidth = (sourceWidth + shrink - 1) / shrink;
    const qint64 workWidth = std::max(decodedWidth, targetWidth);
    const qint64 threads = std::max(concurrency(), 1);

    // The figures below hold for what tests/imaging/drawprobe.cpp measures
    // with 1 to 16 threads and the default allocator, with room to spare.

    // The decoder's side: the library's line cache in front of a
    // sequential decoder, in lines as decoded.
    constexpr qint64 kDecodedLines = 256;
    // Each worker thread holds strips in every stage of colour conversion
    // and resampling (the box shrink, the kernel's window, the buffers it
    // keeps for reuse), about this many lines of the widest stage in all.
    // The stages work on 8-bit RGB, or on floats with transparency
    // (premultiplied) or in linear light.
    constexpr qint64 kWorkLinesPerThread = 640;
    const bool floating = info.hasAlpha || modes.compositingQuality == 3;
    const qint64 workPixelBytes = floating ? 4 * (info.hasAlpha ? 4 : 3) : 3;
    // JPEG and PNG encoders take rows as they come (the write-behind
    // buffers hold a few strips); WebP and AVIF encoders take the whole
    // picture and work on a copy of it.
    constexpr qint64 kOutputLines = 128;
    const bool wholeOutput = format == OutputFormat::WebP || format == OutputFormat::Avif;
    const qint64 outputBytes = targetWidth * (wholeOutput ? targetHeight * 2 : kOutputLines) * 4;
    // The decoder's and encoder's state, colour transforms, thread stacks
    // and the code a drawing touches for the first time.
    constexpr qint64 kFixedBytes = 16 * 1024 * 1024;

    return info.decodeBytes + kFixedBytes + decodedWidth * kDecodedLines * info.bands * info.sampleBytes
           + workWidth * threads * kWorkLinesPerThread * workPixelBytes + outputBytes;
}

Expected<void, Error> drawInto(const DrawRequest &request, files::PendingFile &output)
{
    if (isRequested(request.cancel))
        return unexpected(cancelledError());
    if (!isStarted())
        return unexpected(Error {ErrorCode::Internal, u"the imaging layer is not started"_s});
    const bool jpeg = request.format == OutputFormat::Jpeg;
    const char *suffix = jpeg ? ".jpg" : ".png";
    if ((!jpeg && request.format != OutputFormat::Png) || vips_foreign_find_save_target(suffix) == nullptr) {
        vips_error_clear();
        return unexpected(Error {ErrorCode::NoEncoder, {}});
    }
    if (request.width < 1 || request.height < 1
        || (jpeg && (request.width > kMaxJpegSide || request.height > kMaxJpegSide)))
        return unexpected(Error {ErrorCode::SizeUnusable,
                                 u"%1 x %2"_s.arg(request.width).arg(request.height)});
    if (!output.isOpen())
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});

    SourceFile file(request.cancel);
    if (auto opened = file.open(request.source); !opened)
        return opened;
    // Taken before the pixels: the source's header block as it would be put
    // in front of the output.
    QByteArray exifHeader;
    if (request.carryExif && jpeg) {
        if (const std::optional<QByteArray> block = detail::readExifBlock(file.descriptor()))
            exifHeader = detail::portableHeaderBlock(*block);
    }

    OutputWriter writer(output, jpeg, exifHeader, request.cancel);
    quint64 warningsBeforeClose = 0;
    {
        auto pipeline = drawingPipeline(file, request);
        if (!pipeline)
            return unexpected(pipeline.error());
        stopOnCancel(*pipeline, request.cancel);
        try {
            pipeline->write_to_target(suffix, writer.newTarget(),
                                      detail::encoderOptions(jpeg, request.quality));
        } catch (const vips::VError &error) {
            const QString message = libraryMessage(error);
            if (writer.cancelled() || file.cancelRequested())
                return unexpected(cancelledError());
            if (writer.error())
                return unexpected(*writer.error());
            if (file.readErrno() != 0)
                return unexpected(file.readError());
            // The encoders here fail only on their output, which is
            // accounted for above: the pixels could not be decoded.
            return unexpected(Error {ErrorCode::Damaged, message});
        }
        warningsBeforeClose = detail::libraryWarningCount();
        // The pipeline closes here, on this thread.
    }
    // A JPEG decoder that met damaged data in its last strip has no later
    // strip to fail in; it can only warn when it is closed.
    if (detail::libraryWarningCount() != warningsBeforeClose)
        return unexpected(Error {ErrorCode::Damaged, u"the decoder reported damaged data at the end of the image"_s});
    return writer.finish();
}

Expected<void, Error> copyInto(const QString &source, files::PendingFile &output)
{
    SourceFile file(nullptr);
    if (auto opened = file.open(source); !opened)
        return opened;
    if (!output.isOpen())
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::read(file.descriptor(), buffer.data(), size_t(buffer.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return unexpected(sourceError(errno, source));
        if (got == 0)
            return {};
        if (auto written = output.write(QByteArrayView(buffer.constData(), got)); !written)
            return written;
    }
}

} // namespace valtrona::imaging
