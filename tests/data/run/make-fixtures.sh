#!/usr/bin/env bash
# Regenerates the small images the conversion-run and command-line tests use.
# Needs libvips-tools, exiftool and python3. The results are committed, so
# the tests themselves need none of these tools.
set -euo pipefail
cd "$(dirname "$0")"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# A soft, colourful picture: blurred noise in three bands.
vips gaussnoise "$tmp/r.v" 320 240 --mean 128 --sigma 60
vips gaussnoise "$tmp/g.v" 320 240 --mean 110 --sigma 50
vips gaussnoise "$tmp/b.v" 320 240 --mean 90 --sigma 40
vips bandjoin "$tmp/r.v $tmp/g.v $tmp/b.v" "$tmp/rgb.v"
vips gaussblur "$tmp/rgb.v" "$tmp/soft.v" 3
vips cast "$tmp/soft.v" "$tmp/soft8.v" uchar
vips copy "$tmp/soft8.v" "$tmp/soft8s.v" --interpretation srgb

# photo.jpg: 320 x 240 with an EXIF block (no orientation tag).
vips jpegsave "$tmp/soft8s.v" photo.jpg --Q 90 --strip
exiftool -q -overwrite_original -Make=Testkamera -Model="TK 1" \
    -DateTimeOriginal="2021:06:05 14:30:00" -Artist="Valtrona Test" photo.jpg

# small.jpg: 160 x 120, JFIF only.
vips resize "$tmp/soft8s.v" "$tmp/small.v" 0.5
vips jpegsave "$tmp/small.v" small.jpg --Q 90 --strip

# alpha.png: 100 x 80 with transparency.
vips extract_area "$tmp/soft8s.v" "$tmp/crop.v" 0 0 100 80
vips black "$tmp/a0.v" 100 80
vips linear "$tmp/a0.v" "$tmp/a.v" 1 200
vips cast "$tmp/a.v" "$tmp/a8.v" uchar
vips bandjoin "$tmp/crop.v $tmp/a8.v" "$tmp/rgba.v"
vips pngsave "$tmp/rgba.v" alpha.png --strip

# notimage.jpg: text with an image name.
printf 'Dies ist kein Bild.\n' > notimage.jpg

python3 - <<'PY'
import struct, zlib

# huge.png: a valid PNG header that claims 100000 x 100000 pixels.
def chunk(kind, data):
    return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data) & 0xffffffff)
ihdr = struct.pack('>IIBBBBB', 100000, 100000, 8, 2, 0, 0, 0)
idat = zlib.compress(b'\0' + b'\0' * 300)
open('huge.png', 'wb').write(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', ihdr) + chunk(b'IDAT', idat) + chunk(b'IEND', b''))

# huge.jpg: small.jpg with its frame header claiming 65000 x 65000 pixels.
data = bytearray(open('small.jpg', 'rb').read())
i = 2
while i < len(data):
    marker = data[i + 1]
    length = struct.unpack('>H', data[i + 2:i + 4])[0]
    if marker in (0xC0, 0xC1, 0xC2):
        data[i + 5:i + 9] = struct.pack('>HH', 65000, 65000)
        break
    i += 2 + length
open('huge.jpg', 'wb').write(bytes(data))
PY
