"""TIFF files as bytes, written and read without a library."""

import struct
import zlib

import numpy

FORMATS = {"u": 1, "i": 2, "f": 3, "c": 6}
NUMBERS = {3: "H", 4: "I", 7: "B", 16: "Q"}


def pieces(image, tile, rows, separate):
    """The strips or tiles of an image of rows, columns and channels, plane by plane."""
    planes = [image[..., c:c + 1] for c in range(image.shape[2])] if separate else [image]
    for plane in planes:
        height, width, channels = plane.shape
        if not tile:
            yield from (plane[y:y + rows] for y in range(0, height, rows))
            continue
        for y in range(0, height, tile):
            for x in range(0, width, tile):
                whole = numpy.zeros((tile, tile, channels), plane.dtype)
                part = plane[y:y + tile, x:x + tile]
                whole[:part.shape[0], :part.shape[1]] = part
                yield whole


def entries_of(image, tile, rows, photometric, bits, packed, separate, alpha, more):
    height, width, channels = image.shape
    entries = {256: (4, [width]), 257: (4, [height]), 258: (3, [bits or 8 * image.dtype.itemsize] * channels),
               259: (3, [8 if packed else 1]), 262: (3, [2 if channels >= 3 else 1] if photometric is None else [photometric]),
               277: (3, [channels]), 284: (3, [2 if separate else 1]),
               339: (3, [FORMATS[image.dtype.kind]] * channels), **more}
    entries.update({322: (4, [tile]), 323: (4, [tile])} if tile else {278: (4, [rows])})
    if alpha:
        entries[338] = (3, [2])
    return entries


def tiff(*pages, order="<", big=False, tile=0, rows=3, separate=False, packed=False, bits=0, photometric=None,
         alpha=False, more=()):
    """A file of pages; each is an array of rows, columns and channels, of whole bytes."""
    size = 8 if big else 4
    data = bytearray((b"II" if order == "<" else b"MM") + struct.pack(order + "H", 43 if big else 42))
    data += struct.pack(order + "HHQ", 8, 0, 0) if big else struct.pack(order + "I", 0)
    link = len(data) - size
    for image in pages:
        places, sizes = [], []
        for piece in pieces(image.astype(image.dtype.newbyteorder(order)), tile, rows, separate):
            content = piece.tobytes() if bits in (0, 8) else b"".join(packed_row(row, bits) for row in piece)
            content = zlib.compress(content) if packed else content
            places.append(len(data))
            sizes.append(len(content))
            data += content + bytes(len(content) % 2)
        entries = entries_of(image, tile, rows, photometric, bits, packed, separate, alpha, dict(more))
        entries[324 if tile else 273] = (16 if big else 4, places)
        entries[325 if tile else 279] = (16 if big else 4, sizes)
        table = []
        for tag, (kind, values) in sorted(entries.items()):
            value = struct.pack(order + NUMBERS[kind] * len(values), *values)
            if len(value) > size:
                place = len(data)
                data += value + bytes(len(value) % 2)
                value = struct.pack(order + ("Q" if big else "I"), place)
            table.append(struct.pack(order + ("HHQ" if big else "HHI"), tag, kind, len(values)) + value.ljust(size, b"\0"))
        struct.pack_into(order + ("Q" if big else "I"), data, link, len(data))
        data += struct.pack(order + ("Q" if big else "H"), len(table)) + b"".join(table)
        link = len(data)
        data += bytes(size)
    return bytes(data)


def packed_row(row, bits):
    digits = numpy.unpackbits(row.reshape(-1, 1).astype("u1"), axis=1)[:, 8 - bits:].ravel()
    return numpy.packbits(digits).tobytes()


def read_tiff(data):
    """The pages of a little-endian file in strips, plain or deflated with or without differences, and their tags."""
    pages, big = [], data[2] == 43
    number, kinds, count = ("Q", {**NUMBERS, 5: "II", 12: "d"}, "Q") if big else ("I", {**NUMBERS, 5: "II", 12: "d"}, "H")
    size = struct.calcsize(number)
    place, = struct.unpack_from("<" + number, data, 8 if big else 4)
    while place:
        tags, at = {}, place + struct.calcsize(count)
        for _ in range(struct.unpack_from("<" + count, data, place)[0]):
            tag, kind, n = struct.unpack_from("<HH" + number, data, at)
            form = "<" + kinds.get(kind, "B") * n
            at += 4 + size
            where = at if struct.calcsize(form) <= size else struct.unpack_from("<" + number, data, at)[0]
            tags[tag] = struct.unpack_from(form, data, where)
            at += size
        place, = struct.unpack_from("<" + number, data, at)
        pages.append((samples_of(data, tags), tags))
    return pages


def samples_of(data, tags):
    kind = {1: "u", 2: "i", 3: "f", 6: "c"}[tags[339][0]]
    shape = (-1, tags[256][0], tags[277][0])
    parts = []
    for place, size in zip(tags[273], tags[279]):
        strip = data[place:place + size]
        strip = numpy.frombuffer(strip if tags[259][0] == 1 else zlib.decompress(strip), f"<{kind}{tags[258][0] // 8}")
        parts.append(strip.reshape(shape).cumsum(1, strip.dtype) if 317 in tags and tags[317][0] == 2 else strip.reshape(shape))
    return numpy.concatenate(parts)
