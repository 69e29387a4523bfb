"""Pictures of the virtual screen, read from the server's own frame buffer."""

import dataclasses
import mmap
import struct
import zlib

HEADER_FIELDS = 25


@dataclasses.dataclass(frozen=True)
class Rect:
    """A part of the screen, in pixels."""

    x: int
    y: int
    width: int
    height: int

    @property
    def centre(self):
        """The point to click at."""
        return self.x + self.width // 2, self.y + self.height // 2


class Picture:
    """An RGB picture; row by row, three bytes a pixel."""

    def __init__(self, width, height, rgb):
        self.width = width
        self.height = height
        self.rgb = rgb

    def pixel(self, x, y):
        """The colour at a place as (red, green, blue)."""
        start = 3 * (y * self.width + x)
        return tuple(self.rgb[start:start + 3])

    def pixels(self):
        """All colours, row by row."""
        return list(zip(self.rgb[0::3], self.rgb[1::3], self.rgb[2::3]))

    def crop(self, rect):
        """The part of the picture within `rect`."""
        rows = (self.rgb[3 * (y * self.width + rect.x):3 * (y * self.width + rect.x + rect.width)]
                for y in range(rect.y, rect.y + rect.height))
        return Picture(rect.width, rect.height, b"".join(rows))

    def differing_pixels(self, other, tolerance=24):
        """How many pixels have a clearly different colour in `other`."""
        return sum(max(abs(a - b) for a, b in zip(one, two)) > tolerance
                   for one, two in zip(self.pixels(), other.pixels()))

    def difference_box(self, other):
        """The smallest Rect that holds every differing pixel, or None."""
        places = [divmod(i, self.width) for i, (one, two)
                  in enumerate(zip(self.pixels(), other.pixels())) if one != two]
        if not places:
            return None
        rows, columns = zip(*places)
        return Rect(min(columns), min(rows),
                    max(columns) - min(columns) + 1, max(rows) - min(rows) + 1)

    def enlarged(self, factor):
        """The picture enlarged: every pixel repeated."""
        rows = []
        for y in range(self.height):
            line = b"".join(bytes(self.pixel(x, y)) * factor for x in range(self.width))
            rows.append(line * factor)
        return Picture(self.width * factor, self.height * factor, b"".join(rows))

    def save_png(self, path):
        """Writes the picture as a PNG file."""
        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

        stride = 3 * self.width
        raw = b"".join(b"\0" + self.rgb[y * stride:(y + 1) * stride] for y in range(self.height))
        with open(path, "wb") as png:
            png.write(b"\x89PNG\r\n\x1a\n")
            png.write(chunk(b"IHDR", struct.pack(">2I5B", self.width, self.height, 8, 2, 0, 0, 0)))
            png.write(chunk(b"IDAT", zlib.compress(raw)))
            png.write(chunk(b"IEND", b""))


def read_frame_buffer(path):
    """Reads the file that the X server keeps its screen in (X window dump, 32 bits a pixel)."""
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as data:
        fields = struct.unpack(f">{HEADER_FIELDS}I", data[:4 * HEADER_FIELDS])
        header, width, height, order, depth = (fields[i] for i in (0, 4, 5, 7, 11))
        stride, colours = fields[12], fields[19]
        if order != 0 or depth != 32:
            raise AssertionError("the frame buffer is not little-endian with 32 bits a pixel")
        start = header + 12 * colours
        raw = data[start:start + stride * height]
    rgb = bytearray(3 * width * height)
    for channel, offset in enumerate((2, 1, 0)):
        for y in range(height):
            row = raw[y * stride + offset:y * stride + 4 * width:4]
            rgb[3 * y * width + channel:3 * (y + 1) * width:3] = row
    return Picture(width, height, bytes(rgb))
