"""Gives the font service's two entry points the names that a host's font manager exports them under.

usage: rename_exports.py LIBRARY RENAMED

The names hold '@', which the linker takes for the start of a version, so they are put into the finished library. It must
have been linked with --hash-style=sysv: the names' places in the hash table are worked out anew.
"""

import struct
import sys

RENAMED = {
    "FontServiceCreate".ljust(57, "x"): "?Create@?$DynamicExport@VFontManagerSupport@@@@SAPEAV1@XZ",
    "FontServiceDestroy".ljust(59, "x"): "?Destroy@?$DynamicExport@VFontManagerSupport@@@@SAXPEAV1@@Z",
}
SHT_HASH, SHT_DYNSYM = 5, 11


def sysv_hash(name):
    value = 0
    for byte in name:
        value = (value << 4) + byte
        high = value & 0xF0000000
        value = (value ^ (high >> 24)) & ~high & 0xFFFFFFFF
    return value


def sections(image):
    """Yields (type, offset, size, link) of each section of a 64-bit little-endian ELF file."""
    (table,) = struct.unpack_from("<Q", image, 40)
    entry_size, count = struct.unpack_from("<HH", image, 58)
    for i in range(count):
        _, kind, _, _, offset, size, link = struct.unpack_from("<IIQQQQI", image, table + i * entry_size)
        yield kind, offset, size, link


def rename(image):
    all_sections = list(sections(image))
    symbols = next(s for s in all_sections if s[0] == SHT_DYNSYM)
    names = all_sections[symbols[3]]
    hashes = next(s for s in all_sections if s[0] == SHT_HASH)

    for old, new in RENAMED.items():
        assert len(old) == len(new)
        at = image.index(b"\0" + old.encode() + b"\0", names[1], names[1] + names[2]) + 1
        image[at : at + len(new)] = new.encode()

    bucket_count, chain_count = struct.unpack_from("<II", image, hashes[1])
    buckets, chains = [0] * bucket_count, [0] * chain_count
    for symbol in range(1, chain_count):
        (name,) = struct.unpack_from("<I", image, symbols[1] + symbol * 24)
        start = names[1] + name
        bucket = sysv_hash(image[start : image.index(b"\0", start)]) % bucket_count
        chains[symbol], buckets[bucket] = buckets[bucket], symbol
    struct.pack_into(f"<{bucket_count + chain_count}I", image, hashes[1] + 8, *buckets, *chains)


def main():
    with open(sys.argv[1], "rb") as library:
        image = bytearray(library.read())
    rename(image)
    with open(sys.argv[2], "wb") as library:
        library.write(image)


main()
