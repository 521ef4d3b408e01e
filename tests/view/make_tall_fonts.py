"""Copies fonts and makes their lines three times as high as their size; the letters stay as they are.

usage: make_tall_fonts.py FOLDER FONT...
"""
import os
import struct
import sys

ABOVE, BELOW = 2, 1  # in sizes of the font


def table(font, name):
    """Where one of a TrueType font's tables begins."""
    for entry in range(12, 12 + 16 * struct.unpack_from(">H", font, 4)[0], 16):
        tag, _, offset, _ = struct.unpack_from(">4sIII", font, entry)
        if tag == name:
            return offset
    raise ValueError(f"no table {name}")


def make_tall(font):
    size = struct.unpack_from(">H", font, table(font, b"head") + 18)[0]
    struct.pack_into(">hhh", font, table(font, b"hhea") + 4, ABOVE * size, -BELOW * size, 0)
    struct.pack_into(">hhhHH", font, table(font, b"OS/2") + 68, ABOVE * size, -BELOW * size, 0, ABOVE * size, BELOW * size)


def main():
    folder, *fonts = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    for path in fonts:
        with open(path, "rb") as file:
            font = bytearray(file.read())
        make_tall(font)
        with open(os.path.join(folder, os.path.basename(path)), "wb") as file:
            file.write(font)


if __name__ == "__main__":
    main()
