"""Pictures of a virtual display, from the file in which Xvfb keeps its screen (-fbdir): X's window dump, XWD.

Only what Xvfb writes for 24 bits of colour is understood: four bytes a pixel, blue first.
"""
import struct
import zlib


class ScreenFile:
    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        header = struct.unpack(">25I", self.data[:100])
        self.width, self.height = header[4], header[5]
        self.line = header[12]
        self.pixels = header[0] + 12 * header[19]  # after the header, the window's name and the table of colours
        if (header[1], header[7], header[11]) != (7, 0, 32):
            raise ValueError(f"{path} is no screen of four bytes a pixel: {header}")

    def row(self, y, left, right):
        """Red, green and blue of the pixels from left to right."""
        start = self.pixels + y * self.line
        data = self.data[start + 4 * left:start + 4 * right]
        colours = bytearray(3 * (right - left))
        colours[0::3], colours[1::3], colours[2::3] = data[2::4], data[1::4], data[0::4]
        return bytes(colours)

    def save_png(self, path, left, top, width, height):
        """Writes this part of it; what lies outside of the screen is left out."""
        right, bottom = min(left + width, self.width), min(top + height, self.height)
        left, top = max(left, 0), max(top, 0)
        rows = b"".join(b"\0" + self.row(y, left, right) for y in range(top, bottom))
        with open(path, "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n")
            for kind, content in ((b"IHDR", struct.pack(">IIBBBBB", right - left, bottom - top, 8, 2, 0, 0, 0)),
                                  (b"IDAT", zlib.compress(rows)), (b"IEND", b"")):
                file.write(struct.pack(">I", len(content)) + kind + content
                           + struct.pack(">I", zlib.crc32(kind + content)))
