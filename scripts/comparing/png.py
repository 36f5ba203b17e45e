"""The pixels of a PNG file (8 bits a channel or a palette, not interlaced: what our programs write), and what differs
between two of them. No package beside Python's own is needed."""
import struct
import zlib

CHANNELS = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}


class Picture:
    def __init__(self, data):
        """ValueError when data is no PNG of the kinds that are read here."""
        if data[:8] != b"\x89PNG\r\n\x1a\n":
            raise ValueError("no PNG file")
        at, body, self.palette, header = 8, b"", None, None
        while at + 8 <= len(data):
            length, kind = struct.unpack(">I4s", data[at:at + 8])
            chunk = data[at + 8:at + 8 + length]
            at += 12 + length
            if kind == b"IHDR":
                header = struct.unpack(">IIBBBBB", chunk)
            elif kind == b"PLTE":
                self.palette = chunk
            elif kind == b"IDAT":
                body += chunk
        if header is None or header[2] != 8 or header[6] != 0:
            raise ValueError("a kind of PNG that is not read here")
        self.width, self.height, _, self.kind = header[:4]
        self.bytes_each = CHANNELS[self.kind]
        self.rows = self._unfiltered(zlib.decompress(body))

    def _unfiltered(self, raw):
        step, size = self.bytes_each, self.width * self.bytes_each
        above, rows = bytearray(size), []
        for y in range(self.height):
            start = y * (size + 1)
            row = bytearray(raw[start + 1:start + 1 + size])
            undo(raw[start], row, above, step)
            rows.append(bytes(row))
            above = row
        return rows

    def colour(self, x, y):
        """#rrggbb, with the opacity behind it where the picture has one."""
        value = self.rows[y][x * self.bytes_each:(x + 1) * self.bytes_each]
        if self.kind == 3:
            value = self.palette[3 * value[0]:3 * value[0] + 3]
        return "#" + value.hex()


def undo(kind, row, above, step):
    """Turns a filtered row of bytes into the plain one, in place."""
    if kind == 1:
        for i in range(step, len(row)):
            row[i] = (row[i] + row[i - step]) & 255
    elif kind == 2:
        row[:] = bytes((a + b) & 255 for a, b in zip(row, above))
    elif kind == 3:
        for i in range(len(row)):
            left = row[i - step] if i >= step else 0
            row[i] = (row[i] + (left + above[i]) // 2) & 255
    elif kind == 4:
        for i in range(len(row)):
            left, corner = (row[i - step], above[i - step]) if i >= step else (0, 0)
            row[i] = (row[i] + paeth(left, above[i], corner)) & 255
    elif kind != 0:
        raise ValueError("damaged PNG file")


def paeth(left, up, corner):
    guess = left + up - corner
    by_left, by_up, by_corner = abs(guess - left), abs(guess - up), abs(guess - corner)
    if by_left <= by_up and by_left <= by_corner:
        return left
    return up if by_up <= by_corner else corner


def difference(old_data, new_data):
    """What differs between the pictures in two files, one phrase; None when every pixel is the same."""
    if old_data == new_data:
        return None
    old, new = Picture(old_data), Picture(new_data)
    if (old.width, old.height) != (new.width, new.height):
        return f"{old.width}x{old.height} pixels -> {new.width}x{new.height}"
    plain = old.kind == new.kind and old.palette == new.palette
    differing = []
    for y, (a, b) in enumerate(zip(old.rows, new.rows)):
        if plain and a == b:
            continue
        differing += [(x, y) for x in range(old.width) if old.colour(x, y) != new.colour(x, y)]
    if not differing:
        return None
    columns, rows = [x for x, _ in differing], [y for _, y in differing]
    x, y = differing[0]
    return (f"{len(differing)} of {old.width * old.height} pixels differ, between ({min(columns)}, {min(rows)}) and "
            f"({max(columns)}, {max(rows)}); the first at ({x}, {y}): {old.colour(x, y)} -> {new.colour(x, y)}")
