#!/usr/bin/env python3
"""Makes the seeds that are not text: corpus/profilepage, pageimport, replies and simulatedcharger.

Their layout stands at the head of each target. Run it when a layout changes; seeds that a fuzzer
has found lie beside the ones made here and are lost then.
"""

import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent / "support"))
import flashpage  # noqa: E402  the folder has to be known first

PAGE = flashpage.PAGE_WORD_ADDRESS
IMAGE_WORDS = 0x18000  # word addresses
RIGHT_CHECKSUMS, PHANTOM_BYTES, BLANK_END = 1, 2, 4
FRAMED, HALF_DUPLEX = 1, 2
POWER_ON = 2
MASTER, V24, V48_V1, V48, V72 = range(5)


def put(target, name, data):
    (HERE / "corpus" / target / name).write_bytes(data)


def element(*data):
    """An element with its checksum and the filler of its last flash word."""
    body = b"".join(bytes([part]) if isinstance(part, int) else part for part in data)
    body += bytes([-sum(body) % 256])
    return body + b"\xFF" * (-len(body) % 3)


def stream_of(hex_file):
    """The data bytes of a page in stream order, without the blank end."""
    page = bytearray(flashpage.BLANK_WORD * (flashpage.PAGE_SIZE // 4))
    upper = 0
    for line in hex_file.read_text().splitlines():
        record = bytes.fromhex(line.strip()[1:]) if line.startswith(":") else b""
        if not record:
            continue
        address, kind, data = record[1] << 8 | record[2], record[3], record[4:-1]
        if kind == 4:
            upper = int.from_bytes(data, "big") << 16
        start = upper + address - flashpage.PAGE_BYTE_ADDRESS
        if kind == 0 and 0 <= start < len(page):
            page[start : start + len(data)] = data
    words = [bytes(page[i : i + 3][::-1]) for i in range(0, len(page), 4)]
    blank = words.index(b"\xFF\xFF\xFF") if b"\xFF\xFF\xFF" in words else len(words)
    return b"".join(words[:blank])


def profile_pages():
    def seed(name, schema, flags, address, stream):
        put("profilepage", name, struct.pack("<BBi", schema, flags, address) + stream)

    for name, schema in (("24v", V24), ("48v", V48), ("48v-v1", V48_V1), ("72v", V72)):
        page = stream_of(HERE.parent.parent / "simulator" / "pages" / (name + ".hex"))
        seed("page-" + name, schema, RIGHT_CHECKSUMS | BLANK_END, PAGE, page)
        seed("page-" + name + "-as-it-is", MASTER, BLANK_END, PAGE, page)

    counter, version = element(3, 7), element(4, 2)
    identity = element(4, 1) + element(4, 2) + element(4, 3)
    seed("empty", MASTER, BLANK_END, PAGE, b"")
    seed("blank-end", MASTER, BLANK_END, PAGE, counter)
    seed("no-end", MASTER, 0, PAGE, counter)
    for rows in (1, 5, 8):
        seed("full-rows-%d" % rows, MASTER, 0, PAGE, counter * 64 * rows)
    seed("outdated-element", MASTER, 0, PAGE, counter + bytes([2, 0, 0]))
    seed("unknown-element", MASTER, 0, PAGE, counter + bytes([0xC8, 0, 0]))
    seed("wrong-checksum", MASTER, BLANK_END, PAGE, bytes([3, 7, 0]))
    seed("superseded-elements", MASTER, BLANK_END, PAGE, identity * 3)
    seed("phantom-bytes", MASTER, RIGHT_CHECKSUMS | PHANTOM_BYTES, PAGE,
         b"\x03\x07\x00\x42\x04\x02\x00\x99\xFF\xFF\xFF\xFF")
    seed("longer-than-a-page", MASTER, RIGHT_CHECKSUMS, PAGE, counter * 700)
    seed("large-numbers", MASTER, RIGHT_CHECKSUMS | BLANK_END, PAGE, element(6, b"\xFF" * 28))
    for before in range(1, 9):
        seed("log-to-the-end-of-the-image-%d" % before, MASTER, RIGHT_CHECKSUMS,
             IMAGE_WORDS - 2 * before, counter * before)
    for before in (1, 3, 21):
        seed("odd-address-at-the-end-of-the-image-%d" % before, MASTER, RIGHT_CHECKSUMS,
             IMAGE_WORDS - before, counter * before)
    for address in (0, 1, IMAGE_WORDS - 1, IMAGE_WORDS, -1, 2**31 - 1, -(2**31), 0x7FFF, 0x7FF9):
        seed("address-%d" % address, V48, BLANK_END, address, counter + version)


def page_imports():
    def seed(name, flags, stream):
        put("pageimport", name, bytes([flags]) + stream)

    for name in ("24v", "48v", "48v-v1", "72v"):
        page = stream_of(HERE.parent.parent / "simulator" / "pages" / (name + ".hex"))
        seed("page-" + name, RIGHT_CHECKSUMS, page)
        seed("page-" + name + "-as-it-is", 0, page)
    counter, lithium_head = element(3, 7), bytes([8, 255, 0, 5])
    lithium = lithium_head + b"36V Li(10s)\0" + b"Fast".ljust(14, b"\0")
    numbers = struct.pack("<6H", 2100, 200, 2940, 7900, 4200, 150)
    for hardware in range(8):
        seed("hardware-%d" % hardware, RIGHT_CHECKSUMS,
             counter + element(4, 2) + element(16, hardware) + element(lithium, numbers))
    seed("first-generation", RIGHT_CHECKSUMS,
         counter + element(4, 1) + element(lithium, numbers))
    seed("full-page", RIGHT_CHECKSUMS, counter * 512)
    seed("full-rows", RIGHT_CHECKSUMS, counter * 64)
    seed("counter-alone", RIGHT_CHECKSUMS, counter)
    seed("no-counter", RIGHT_CHECKSUMS, element(4, 2))
    seed("characters-beyond-ascii", RIGHT_CHECKSUMS,
         counter + element(4, 2) + element(16, 1)
         + element(lithium_head, b"\xB0" * 12, b"\xFF" * 14, numbers))


def pieces(*parts):
    return b"".join(bytes([len(part)]) + part for part in parts)


def replies():
    receive, send, version, read, read_eeprom, identify, verify, change = range(8)

    def seed(name, conversation, flags, portion, rest):
        put("replies", name, bytes([conversation, flags, portion - 1]) + rest)

    control = bytes([0x04, 0x05, 0x55])
    seed("frame", receive, 0, 64, b"\x00" + bytes.fromhex("55550100FF04"))
    seed("frame-behind-echo", receive, 0, 1, b"\x06" + bytes.fromhex("55550002FE0455550100FF04"))
    seed("escaped-end", receive, 0, 64, b"\x00" + bytes.fromhex("5555010503050504"))
    seed("end-without-frame", receive, 0, 7, b"\x00" + b"\x04" * 6)
    seed("reply-without-end", receive, 0, 200, b"\x00" + b"\x55" * 600)
    seed("reply-longer-than-its-buffer", receive, 0, 256, b"\x00" + b"\x55\x55" + b"A" * 600 + b"\x04")
    seed("wrong-checksum", receive, 0, 64, b"\x00" + bytes.fromhex("55550100FE04"))
    seed("checksum-only", receive, 0, 64, b"\x00" + bytes.fromhex("5555050404"))
    seed("framed", receive, FRAMED, 3, pieces(b"", b"\x01\x40\x00\x9C\x00" + control))
    seed("framed-behind-echo", receive, FRAMED, 1, pieces(b"\x55" * 9, b"\x01" + control * 80))
    seed("longest-frame", receive, FRAMED, 256, pieces(b"", control * 85, control * 2))
    seed("too-long-frame", receive, FRAMED, 256, pieces(b"", control * 85, control * 3))
    seed("send", send, 0, 1, pieces(b"\x02\x01\x00\x9C\x00", bytes(range(255))))
    seed("send-too-much", send, 0, 1, pieces(control * 85, control * 85))
    seed("version", version, FRAMED, 64, pieces(bytes([0, 2, 0, 0, 1, 6])))
    seed("version-half-duplex", version, FRAMED | HALF_DUPLEX, 4, pieces(bytes([0, 2, 0, 0, 1, 6])))
    data = bytes(range(256))[:250]
    seed("read", read, FRAMED, 64, pieces(b"\x01\x40\x00\x9C\x00" + data))
    seed("read-eeprom", read_eeprom, FRAMED, 64, pieces(b"\x04\x40\x00\x9C\x00" + data))
    seed("identify", identify, 0, 5, pieces(b"C", b"A", b"\x01\x06"))
    seed("identify-noise", identify, 0, 5, pieces(b"\x00C\xFFA", b"\x01"))
    seed("no-charger", identify, 0, 1, b"")
    rows = [bytes(range(i, i + 16)) for i in range(0, 64, 16)]
    flash = [b"\x01\x04" + bytes([0x80 + 8 * i, 0, 0]) + row for i, row in enumerate(rows)]
    eeprom = [b"\x04\x08" + bytes([16 * i, 1, 0]) + row for i, row in enumerate(rows)]
    seed("verify", verify, FRAMED, 64, pieces(*flash, *eeprom))
    seed("verify-half-duplex", verify, FRAMED | HALF_DUPLEX, 64, pieces(*flash, *eeprom))
    seed("verify-different", verify, FRAMED, 64, pieces(flash[0], flash[0]))
    seed("verify-short-reply", verify, FRAMED, 64, pieces(flash[0][:12], flash[1][:4]))
    done = [bytes([command]) for command in (3, 2, 5, 8, 3)]
    seed("change", change, FRAMED | HALF_DUPLEX, 64, pieces(*done))
    seed("change-wrong-replies", change, FRAMED, 64, pieces(*done[1:]))


def simulated_chargers():
    def seed(name, flags, rest):
        put("simulatedcharger", name, bytes([flags]) + rest)

    seed("version", 0, bytes.fromhex("55550002FE04"))
    seed("reset", 0, bytes.fromhex("555500000004"))
    seed("noise-and-version", 0, bytes.fromhex("00FF5504055555000255550002FE04"))
    seed("wrong-checksum", 0, bytes.fromhex("55550002FF04"))
    seed("no-content", 0, bytes.fromhex("55550455550504"))
    seed("greeting", POWER_ON, b"\x55" * 6 + bytes.fromhex("55550002FE04"))
    seed("endless-frame", 0, b"\x55\x55" + b"A" * 1100 + bytes.fromhex("0455550002FE04"))
    row = b"\x02\x01\x00\x9C\x00" + bytes(250)
    commands = [b"\x00\x02", b"\x01\x40\x00\x9C\x00", b"\x03\x01\x00\x9C\x00", row, b"\x08",
                b"\x04\x08\x00\x00\x00", b"\x05\x08\x00\x00\x00" + bytes(16), b"\x09\x01",
                b"\x01\xFF\xFF\xFF\xFF", b"\x03\xFF\x00\x0C\x00", b"\x03\x00\x00\x0C\x00", b"\x01",
                b"\x00\x00"]
    seed("commands", FRAMED, pieces(*commands))
    seed("commands-power-on", FRAMED | POWER_ON, pieces(*commands))


profile_pages()
page_imports()
replies()
simulated_chargers()
