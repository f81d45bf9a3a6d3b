#!/usr/bin/env python3
"""Takes out of a PDB of the GNU linker what another build would not have: the time, and the folders.

    normalize_pdb.py FILE OLD=NEW...    object files whose path begins with OLD get NEW instead; of
                                        several that fit, the last counts

A PDB is a file of streams, cut into blocks.  As paths of other lengths move everything behind them, the
file is written anew, stream by stream.
"""
import pathlib
import struct
import sys

MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
INFO_STREAM, DEBUG_STREAM = 1, 3
MODULE_SIZE_AT = 24  # in the head of the debug stream: the length of the list of modules behind it
HEAD_LENGTH = 64
MODULE_LENGTH = 64  # of a module's record before its two names
SYMBOLS_AT = 34  # in that: the number of the module's stream, and the length of the symbols there
NO_STREAM = 0xFFFF
S_ENVBLOCK = 0x113D


def blocks_for(length, block):
    return -(-length // block)


def read_streams(data):
    if not data.startswith(MAGIC):
        sys.exit("this is no PDB")
    block, _, _, length, _, map_block = struct.unpack_from("<6I", data, len(MAGIC))

    def read(numbers, length):
        return b"".join(data[n * block : (n + 1) * block] for n in numbers)[:length]

    numbers = struct.unpack_from(f"<{blocks_for(length, block)}I", data, map_block * block)
    directory = struct.iter_unpack("<I", read(numbers, length))
    lengths = [next(directory)[0] for _ in range(next(directory)[0])]
    return block, [
        read([next(directory)[0] for _ in range(blocks_for(length, block))], length)
        for length in lengths
    ]


def write_streams(block, streams):
    blocks = [b""] * 3  # the head, and two maps of free blocks

    def append(data):
        numbers = []
        for start in range(0, len(data), block):
            while len(blocks) % block in (1, 2):  # the places of further maps
                blocks.append(b"")
            numbers.append(len(blocks))
            blocks.append(data[start : start + block])
        return struct.pack(f"<{len(numbers)}I", *numbers)

    lengths = struct.pack(f"<{len(streams) + 1}I", len(streams), *map(len, streams))
    directory = lengths + b"".join(append(stream) for stream in streams)
    map_of_directory = append(directory)
    map_block, = struct.unpack("<I", append(map_of_directory))
    blocks[0] = MAGIC + struct.pack("<6I", block, 1, len(blocks), len(directory), 0, map_block)
    # No block is free; the bits beyond the file's end say that there is room.
    free = (-1 << len(blocks)) & ((1 << 8 * block * blocks_for(len(blocks), 8 * block)) - 1)
    free = free.to_bytes(block * blocks_for(len(blocks), 8 * block), "little")
    for i, start in enumerate(range(1, len(blocks), block)):
        blocks[start] = free[i * block : (i + 1) * block]
    return b"".join(data.ljust(block, b"\0") for data in blocks)


def map_name(name, maps):
    for old, new in reversed(maps):
        if name.startswith(old):
            return new + name[len(old) :]
    return name


def without_environment(symbols):
    """A module's symbols without those records that say where the linker has run."""
    kept, position = symbols[:4], 4
    while position < len(symbols):
        length, kind = struct.unpack_from("<HH", symbols, position)
        record = symbols[position : position + 2 + length]
        kept += record if kind != S_ENVBLOCK else b""
        position += len(record)
    return kept


def normalize_modules(streams, maps):
    debug = streams[DEBUG_STREAM]
    length, = struct.unpack_from("<I", debug, MODULE_SIZE_AT)
    modules, position = b"", HEAD_LENGTH
    while position < HEAD_LENGTH + length:
        module = bytearray(debug[position : position + MODULE_LENGTH])
        first, second = debug[position + MODULE_LENGTH :].split(b"\0", 2)[:2]
        position += MODULE_LENGTH + len(first) + 1 + len(second) + 1
        position += -position % 4
        stream, size = struct.unpack_from("<HI", module, SYMBOLS_AT)
        if stream != NO_STREAM:
            symbols = without_environment(streams[stream][:size])
            streams[stream] = symbols + streams[stream][size:]
            struct.pack_into("<I", module, SYMBOLS_AT + 2, len(symbols))
        modules += module + b"".join(map_name(name, maps) + b"\0" for name in (first, second))
        modules += b"\0" * (-len(modules) % 4)
    head = bytearray(debug[:HEAD_LENGTH])
    struct.pack_into("<I", head, MODULE_SIZE_AT, len(modules))
    streams[DEBUG_STREAM] = bytes(head) + modules + debug[HEAD_LENGTH + length :]


def main(path, *maps):
    maps = [tuple(map(str.encode, text.split("=", 1))) for text in maps]
    block, streams = read_streams(path.read_bytes())
    info = bytearray(streams[INFO_STREAM])
    struct.pack_into("<I", info, 4, 0)  # the time
    streams[INFO_STREAM] = bytes(info)
    normalize_modules(streams, maps)
    path.write_bytes(write_streams(block, streams))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), *sys.argv[2:])
