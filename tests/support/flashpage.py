#!/usr/bin/env python3
"""The charger's profile page, field by field, in both directions.

An element is a row of fields, the first its type, the last a checksum that makes the sum of its
bytes 0 modulo 256. Flash words hold three bytes and a fourth that does not exist and reads 0; in a
HEX file the first and the third byte of a word have changed places. Elements start on whole words,
the rest of a last word is FF, and the first blank word ends the page.

As a program it prints a page as JSON: flashpage.py PAGE.hex
Written from the charger's tables alone, so that it checks the suite and not itself.
"""

import json
import sys
from fractions import Fraction

PAGE_WORD_ADDRESS = 0x9C00
PAGE_BYTE_ADDRESS = 2 * PAGE_WORD_ADDRESS
PAGE_SIZE = 0x800
BLANK_WORD = bytes([0xFF, 0xFF, 0xFF, 0x00])


class PageError(Exception):
    """What is wrong with a page, in words."""


class Number:
    """A little-endian integer of so many bytes; shown is the integer times the scale."""

    def __init__(self, name, size, scale="1", signed=False):
        self.name, self.size, self.scale, self.signed = name, size, Fraction(scale), signed

    def encode(self, value):
        raw = round(Fraction(str(value)) / self.scale)
        try:
            return raw.to_bytes(self.size, "little", signed=self.signed)
        except OverflowError:
            raise PageError("%s: %s does not fit" % (self.name, value)) from None

    def decode(self, data):
        raw = int.from_bytes(data, "little", signed=self.signed)
        shown = raw * self.scale
        return int(shown) if shown.denominator == 1 else float(shown)


class Flag:
    """One byte, 1 or 0."""

    size = 1

    def __init__(self, name):
        self.name = name

    def encode(self, value):
        return bytes([1 if value else 0])

    def decode(self, data):
        return data[0] != 0


class Text:
    """Characters and at least one 0 behind them."""

    def __init__(self, name, size):
        self.name, self.size = name, size

    def encode(self, value):
        data = value.encode("ascii")
        if len(data) >= self.size:
            raise PageError('%s: "%s" is too long' % (self.name, value))
        return data.ljust(self.size, b"\0")

    def decode(self, data):
        return data.split(b"\0")[0].decode("latin-1")


class Status:
    """The byte of four flags and a number of four bits that each profile has."""

    size = 1
    name = None
    flags = ("active", "defaultprofile", "modifiable", "scheduled_for_deletion")

    def encode(self, values):
        byte = sum(1 << bit for bit, name in enumerate(self.flags) if values[name])
        return bytes([byte | values["extraneous1"] << 4])

    def decode(self, data):
        values = {name: bool(data[0] >> bit & 1) for bit, name in enumerate(self.flags)}
        values["extraneous1"] = data[0] >> 4
        return values


HOURS = "0.0002777777"  # of a second

PROFILE_HEAD = [
    Number("profile_id", 1),
    Number("chemistry", 1),
    Status(),
    Text("title", 12),
    Text("description", 14),
]

# Type number: name, fields between type and checksum.
ELEMENTS = {
    3: ("page_counter", [Number("count", 1)]),
    4: ("version", [Number("version", 1)]),
    5: (
        "global_settings",
        [
            Number("brightness", 1),
            Number("screensaver_delay_m", 1),
            Flag("flip_display"),
            Number("longpress_time_cs", 2, "0.01"),
            Number("shortpress_time_cs", 2, "0.01"),
            Number("release_debounce_time_cs", 2, "0.01"),
            Number("cable_resistance_mOhm", 2, "0.001"),
            Number("splashscreen_time_decis", 1, "0.1"),
            Number("current_tare_period_minutes", 1),
            Number("voltage_gain_tweak_vv", 2, signed=True),
            Number("current_gain_tweak_vv", 2, signed=True),
            Number("voltage_offset_tweak_lsb", 2, signed=True),
            Number("temperature_limit_degrees_celsius", 1, signed=True),
        ],
    ),
    6: (
        "global_stats",
        [
            Number("totalchargetime", 4, HOURS),
            Number("lifetime", 4, HOURS),
            Number("charge_cycles", 4),
            Number("ah_total", 8, HOURS),
            Number("wh_total", 8, HOURS),
        ],
    ),
    7: (
        "profile_stats",
        [
            Number("profile_id", 1),
            Number("Wh", 4, "0.1"),
            Number("Ah", 4, "0.01"),
            Number("chargetime_s", 4, HOURS),
            Number("charge_count", 4),
        ],
    ),
    8: (
        "chemistry_lithium",
        PROFILE_HEAD
        + [
            Number("min_start_V", 2, "0.01"),
            Number("start_I", 2, "0.001"),
            Number("bulk_start_V", 2, "0.01"),
            Number("bulk_I", 2, "0.001"),
            Number("full_V", 2, "0.01"),
            Number("complete_I", 2, "0.001"),
        ],
    ),
    9: (
        "chemistry_nickel",
        PROFILE_HEAD
        + [
            Number("start_I", 2, "0.001"),
            Number("bulk_start_V", 2, "0.01"),
            Number("bulk_I", 2, "0.001"),
            Number("nominal_full_V", 2, "0.01"),
            Number("delta_V", 2, "0.01"),
            Flag("external_thermistor"),
            Number("max_T", 1),
            Number("dTdt", 2, "0.1"),
            Number("max_V", 2, "0.01"),
            Number("topup_I", 2, "0.001"),
            Number("topup_time", 2, "0.01"),
        ],
    ),
    10: (
        "chemistry_lead",
        PROFILE_HEAD
        + [
            Number("bulk_I", 2, "0.001"),
            Number("full_V", 2, "0.01"),
            Number("full_V_min_I", 2, "0.001"),
            Number("full_V_max_time", 2, "0.001"),
            Number("float_V", 2, "0.01"),
        ],
    ),
    16: ("hardwareVersion", [Number("version", 1)]),
    17: ("barcode", [Text("barcode", 5)]),
}
TYPES = {name: number for number, (name, _) in ELEMENTS.items()}


def field_named(element, name):
    """The description of one field of an element."""
    return next(field for field in ELEMENTS[TYPES[element]][1] if field.name == name)


def encode_element(values):
    """The data bytes of an element, checksum included; values["element"] names its kind."""
    number = TYPES[values["element"]]
    data = bytes([number])
    for field in ELEMENTS[number][1]:
        data += field.encode(values if field.name is None else values[field.name])
    return data + bytes([-sum(data) & 0xFF])


def decode_element(data, start):
    """The element that begins at data[start] and the number of its data bytes."""
    number = data[start]
    if number not in ELEMENTS:
        raise PageError("unknown type %d at data byte %d" % (number, start))
    name, fields = ELEMENTS[number]
    values = {"element": name}
    at = start + 1
    for field in fields:
        decoded = field.decode(data[at : at + field.size])
        values.update(decoded if field.name is None else {field.name: decoded})
        at += field.size
    if sum(data[start : at + 1]) % 256 != 0:
        raise PageError("wrong checksum of the %s at data byte %d" % (name, start))
    return values, at + 1 - start


def data_to_image(data):
    """Data bytes, three to a word, to image bytes in file order."""
    image = b""
    for at in range(0, len(data), 3):
        first, second, third = data[at : at + 3]
        image += bytes([third, second, first, 0])
    return image


def image_to_data(image):
    """The other way round; the bytes that do not exist are left out unseen."""
    data = b""
    for at in range(0, len(image), 4):
        data += bytes([image[at + 2], image[at + 1], image[at]])
    return data


def encode_page(elements):
    """The image of a page, as long as its elements are."""
    data = b""
    for values in elements:
        one = encode_element(values)
        data += one + b"\xff" * (-len(one) % 3)
    image = data_to_image(data)
    if len(image) + len(BLANK_WORD) > PAGE_SIZE:
        raise PageError("the page is full: %d bytes" % len(image))
    return image


def decode_page(image):
    """The elements of a page in their order."""
    data = image_to_data(image)
    elements = []
    at = 0
    while at < len(data) and data[at] != 0xFF:
        values, size = decode_element(data, at)
        elements.append(values)
        at += size + -size % 3
    return elements


def latest(elements):
    """What counts: the last copy of each element, in the order of the first ones."""
    found = {}
    for values in elements:
        is_profile = values["element"].startswith("chemistry_")
        kind = "profile" if is_profile else values["element"]
        found[kind, values.get("profile_id")] = values
    return list(found.values())


def hex_record(kind, address, data):
    record = bytes([len(data), address >> 8, address & 0xFF, kind]) + data
    return ":%s%02X\n" % (record.hex().upper(), -sum(record) & 0xFF)


def to_hex(image, address=PAGE_BYTE_ADDRESS):
    """An image as Intel HEX text, filled up with blank words to whole records."""
    image += BLANK_WORD * (-len(image) % 16 // 4)
    text = ""
    upper = None
    for at in range(0, len(image), 16):
        absolute = address + at
        if absolute >> 16 != upper:
            upper = absolute >> 16
            text += hex_record(4, 0, upper.to_bytes(2, "big"))
        text += hex_record(0, absolute & 0xFFFF, image[at : at + 16])
    return text + hex_record(1, 0, b"")


def from_hex(text, start=PAGE_BYTE_ADDRESS, size=PAGE_SIZE):
    """The bytes of one stretch of Intel HEX text; what the text does not mention is blank."""
    image = bytearray(BLANK_WORD * (size // 4))
    upper = 0
    for number, line in enumerate(text.splitlines(), 1):
        if not line.startswith(":"):
            continue
        try:
            record = bytes.fromhex(line[1:].strip())
        except ValueError:
            raise PageError("line %d is no HEX record" % number) from None
        if len(record) < 5 or len(record) != record[0] + 5:
            raise PageError("line %d has a wrong length" % number)
        if sum(record) % 256 != 0:
            raise PageError("line %d has a wrong checksum" % number)
        kind, data = record[3], record[4:-1]
        if kind == 1:
            return bytes(image)
        if kind == 4:
            upper = int.from_bytes(data, "big") << 16
        if kind == 0:
            address = upper + int.from_bytes(record[1:3], "big")
            for at, byte in enumerate(data, address - start):
                if 0 <= at < size:
                    image[at] = byte
    raise PageError("there is no end record")


def main(arguments):
    if len(arguments) != 2:
        sys.exit("usage: flashpage.py PAGE.hex")
    try:
        with open(arguments[1], encoding="ascii") as file:
            elements = decode_page(from_hex(file.read()))
    except (OSError, PageError) as error:
        sys.exit("flashpage.py: %s" % error)
    json.dump(elements, sys.stdout, indent=1)
    print()


if __name__ == "__main__":
    main(sys.argv)
