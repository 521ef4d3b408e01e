#!/usr/bin/env python3
"""Makes Dunmere.icns from ../dunmere.svg with rsvg-convert (Debian: librsvg2-bin). To be run by hand when
the drawing has changed.

An icns file is a list of pictures: "icns", the file's length, and for each picture a type, the length of this entry and
a PNG file. Lengths are big-endian and count their own eight bytes."""
import os
import struct
import subprocess

HERE = os.path.dirname(os.path.realpath(__file__))
DRAWING = os.path.join(HERE, "..", "dunmere.svg")

# Type of entry by size in pixels: plain ones, and those for screens with two pixels to a point.
TYPES = [(b"icp4", 16), (b"icp5", 32), (b"ic07", 128), (b"ic08", 256), (b"ic09", 512),
         (b"ic11", 32), (b"ic12", 64), (b"ic13", 256), (b"ic14", 512), (b"ic10", 1024)]


def picture(pixels):
    return subprocess.run(["rsvg-convert", f"--width={pixels}", f"--height={pixels}", DRAWING], check=True,
                          capture_output=True).stdout


def entry(kind, content):
    return kind + struct.pack(">I", 8 + len(content)) + content


def main():
    pictures = {pixels: picture(pixels) for pixels in {pixels for _, pixels in TYPES}}
    with open(os.path.join(HERE, "Dunmere.icns"), "wb") as file:
        file.write(entry(b"icns", b"".join(entry(kind, pictures[pixels]) for kind, pixels in TYPES)))


if __name__ == "__main__":
    main()
