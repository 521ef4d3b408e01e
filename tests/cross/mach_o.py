"""Reads Mach-O files of 64-bit programs as far as the tests ask."""
import struct

MAGIC = 0xFEEDFACF
PROCESSORS = {0x0100000C: "arm64", 0x01000007: "x86_64"}
EXECUTABLE = 2
SYMBOL_TABLE, CODE_SIGNATURE, BUILD_VERSION, ENTRY_POINT = 0x2, 0x1D, 0x32, 0x80000028
LIBRARIES = (0xC, 0x80000018, 0x8000001F)  # loaded, loaded if there, loaded and handed on
MACOS = 1
SYMBOL = struct.Struct("<IBBHQ")
DEBUGGING, TYPE, UNDEFINED = 0xE0, 0x0E, 0x0


class MachO:
    def __init__(self, content):
        self.content = content
        magic, processor, _, self.file_type, self.command_count, _, _, _ = struct.unpack_from("<8I", content)
        if magic != MAGIC:
            raise ValueError(f"no 64-bit Mach-O file: {magic:#x}")
        self.processor = PROCESSORS[processor]

    def commands(self):
        offset = 32
        for _ in range(self.command_count):
            kind, size = struct.unpack_from("<2I", self.content, offset)
            yield kind, offset
            offset += size

    def has(self, command):
        return any(kind == command for kind, _ in self.commands())

    def text_at(self, offset):
        return self.content[offset:self.content.index(b"\0", offset)].decode()

    def libraries(self):
        for kind, offset in self.commands():
            if kind in LIBRARIES:
                yield self.text_at(offset + struct.unpack_from("<I", self.content, offset + 8)[0])

    def platform_and_oldest_version(self):
        offset = next(offset for kind, offset in self.commands() if kind == BUILD_VERSION)
        platform, version = struct.unpack_from("<2I", self.content, offset + 8)
        return platform, (version >> 16, version >> 8 & 0xFF)

    def imports(self):
        """The names that the system must provide."""
        offset = next(offset for kind, offset in self.commands() if kind == SYMBOL_TABLE)
        symbols, count, texts, _ = struct.unpack_from("<4I", self.content, offset + 8)
        for index in range(count):
            name, kind, _, _, _ = SYMBOL.unpack_from(self.content, symbols + index * SYMBOL.size)
            if not kind & DEBUGGING and kind & TYPE == UNDEFINED:
                yield self.text_at(texts + name)
