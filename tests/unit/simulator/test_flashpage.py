#!/usr/bin/env python3
"""Tests of the page tables, of the page maker and of the pages that it has made."""

import io
import json
import pathlib
import sys
import unittest
from contextlib import redirect_stdout

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path[:0] = [str(ROOT / "tests" / "support"), str(ROOT / "simulator" / "pages")]

import flashpage  # noqa: E402
import make_pages  # noqa: E402


def page_from_data(data):
    return flashpage.data_to_image(data + b"\xff" * (-len(data) % 3))


class Tables(unittest.TestCase):
    SIZES = {
        "page_counter": 3,
        "version": 3,
        "global_settings": 22,
        "global_stats": 30,
        "profile_stats": 19,
        "chemistry_lithium": 43,
        "chemistry_nickel": 51,
        "chemistry_lead": 41,
        "hardwareVersion": 3,
        "barcode": 7,
    }

    def test_sizes(self):
        for name, size in self.SIZES.items():
            fields = flashpage.ELEMENTS[flashpage.TYPES[name]][1]
            self.assertEqual(2 + sum(field.size for field in fields), size, name)
        self.assertEqual(len(self.SIZES), len(flashpage.ELEMENTS))

    def test_numbers(self):
        for field, value, data in [
            (flashpage.Number("", 2, "0.1"), 145.6, b"\xb0\x05"),
            (flashpage.Number("", 2, "0.01"), 14.56, b"\xb0\x05"),
            (flashpage.Number("", 4), 16909060, b"\x04\x03\x02\x01"),
            (flashpage.Number("", 2, signed=True), -1000, b"\x18\xfc"),
            (flashpage.Number("", 1), 200, b"\xc8"),
        ]:
            self.assertEqual(field.encode(value), data)
            self.assertEqual(field.decode(data), value)

    def test_what_does_not_fit(self):
        with self.assertRaisesRegex(flashpage.PageError, "bulk_I: 65.536 does not fit"):
            flashpage.Number("bulk_I", 2, "0.001").encode(65.536)
        with self.assertRaisesRegex(flashpage.PageError, 'title: "123456789012" is too long'):
            flashpage.Text("title", 12).encode("123456789012")

    def test_texts(self):
        field = flashpage.Text("title", 4)
        self.assertEqual(field.encode("hi"), b"hi\0\0")
        self.assertEqual(field.decode(b"hi\0x"), "hi")
        self.assertEqual(field.decode(b"\xb0abc"), "\u00b0abc")

    def test_status(self):
        values = {
            "active": True,
            "defaultprofile": False,
            "modifiable": True,
            "scheduled_for_deletion": False,
            "extraneous1": 0,
        }
        self.assertEqual(flashpage.Status().encode(values), b"\x05")
        self.assertEqual(flashpage.Status().decode(b"\x05"), values)
        self.assertEqual(flashpage.Status().decode(b"\xa8")["extraneous1"], 10)
        self.assertTrue(flashpage.Status().decode(b"\xa8")["scheduled_for_deletion"])


class Pages(unittest.TestCase):
    def test_page_counter(self):
        counter = {"element": "page_counter", "count": 0}
        self.assertEqual(flashpage.encode_element(counter), b"\x03\x00\xfd")
        self.assertEqual(flashpage.encode_page([counter]), b"\xfd\x00\x03\x00")
        self.assertEqual(flashpage.decode_page(b"\xfd\x00\x03\x00"), [counter])

    def test_lithium(self):
        # Put together by hand from the offsets of the record.
        data = bytearray(43)
        data[0:4] = [8, 7, 0, 0b0101]
        data[4:15] = b"36V Li(10s)"
        data[16:27] = b"Fast Charge"
        data[30:42] = bytes.fromhex("3408 c800 7c0b 401f 6810 9600")
        data[42] = -sum(data) & 0xFF
        (values,) = flashpage.decode_page(page_from_data(bytes(data)))
        self.assertEqual(
            values,
            {
                "element": "chemistry_lithium",
                "profile_id": 7,
                "chemistry": 0,
                "active": True,
                "defaultprofile": False,
                "modifiable": True,
                "scheduled_for_deletion": False,
                "extraneous1": 0,
                "title": "36V Li(10s)",
                "description": "Fast Charge",
                "min_start_V": 21,
                "start_I": 0.2,
                "bulk_start_V": 29.4,
                "bulk_I": 8,
                "full_V": 42,
                "complete_I": 0.15,
            },
        )
        self.assertEqual(flashpage.encode_element(values), bytes(data))

    def test_blank_page_is_empty(self):
        self.assertEqual(flashpage.decode_page(flashpage.BLANK_WORD * 512), [])

    def test_stops_at_a_blank_word(self):
        image = b"\xfd\x00\x03\x00" + flashpage.BLANK_WORD + b"\x00\x00\x00\x00"
        self.assertEqual(len(flashpage.decode_page(image)), 1)

    def test_bad_pages(self):
        for image, reason in [
            (b"\xfc\x00\x03\x00", "wrong checksum of the page_counter at data byte 0"),
            (b"\xfd\x00\x03\x00" + b"\x00\x00\x0b\x00", "unknown type 11 at data byte 3"),
            (bytes(16), "unknown type 0 at data byte 0"),
        ]:
            with self.assertRaisesRegex(flashpage.PageError, reason):
                flashpage.decode_page(image)

    def test_full_page(self):
        counter = {"element": "page_counter", "count": 1}
        self.assertEqual(len(flashpage.encode_page([counter] * 511)), 2044)
        with self.assertRaisesRegex(flashpage.PageError, "the page is full"):
            flashpage.encode_page([counter] * 512)

    def test_latest_copy_counts(self):
        elements = flashpage.decode_page(
            flashpage.encode_page(
                [
                    make_pages.profile_stats(3, 10, 10, 3600, 1),
                    make_pages.profile_stats(1, 10, 10, 3600, 1),
                    make_pages.profile_stats(3, 20, 20, 7200, 2),
                ]
            )
        )
        self.assertEqual(flashpage.latest(elements), [elements[2], elements[1]])


class HexText(unittest.TestCase):
    PAGE = ":020000040001F9\n:10380000FD000300FFFFFF00FFFFFF00FFFFFF00C1\n:00000001FF\n"

    def test_both_ways(self):
        image = b"\xfd\x00\x03\x00"
        self.assertEqual(flashpage.to_hex(image), self.PAGE)
        self.assertEqual(flashpage.from_hex(self.PAGE), image + flashpage.BLANK_WORD * 511)

    def test_an_address_beyond_a_row_of_64_kilobytes(self):
        text = flashpage.to_hex(bytes(32), 0xFFF0)
        self.assertEqual(
            [line[:9] for line in text.splitlines()],
            [":02000004", ":10FFF000", ":02000004", ":10000000", ":00000001"],
        )

    def test_other_addresses_are_left_out(self):
        other = self.PAGE.replace(":020000040001F9", ":020000040002F8")
        self.assertEqual(flashpage.from_hex(other), flashpage.BLANK_WORD * 512)

    def test_bad_text(self):
        for text, reason in [
            ("", "there is no end record"),
            (self.PAGE.replace(":10", ":11", 1), "line 2 has a wrong length"),
            (self.PAGE.replace("C1", "C2"), "line 2 has a wrong checksum"),
            (self.PAGE.replace("FD", "FG"), "line 2 is no HEX record"),
        ]:
            with self.assertRaisesRegex(flashpage.PageError, reason):
                flashpage.from_hex(text)

    def test_program_prints_json(self):
        output = io.StringIO()
        with redirect_stdout(output):
            flashpage.main(["", str(ROOT / "simulator" / "pages" / "48v.hex")])
        elements = json.loads(output.getvalue())
        self.assertEqual(elements[0], {"element": "page_counter", "count": 41})


class NamedPages(unittest.TestCase):
    """What each page promises to those who test with it."""

    # Name: version, hardware version, bulk current and full voltage at most, nominal voltage.
    HARDWARE = {
        "24v": (2, 2, 15, 34, 24),
        "48v": (2, 4, 8, 63, 48),
        "72v": (2, 5, 5, 103, 72),
        "48v-v1": (1, None, 8, 63, 48),
    }

    def pages(self):
        for name in self.HARDWARE:
            file = ROOT / "simulator" / "pages" / (name + ".hex")
            with self.subTest(name):
                image = flashpage.from_hex(file.read_text(encoding="ascii"))
                yield name, flashpage.decode_page(image)

    def test_hardware(self):
        for name, elements in self.pages():
            version, hardware = self.HARDWARE[name][:2]
            found = {values["element"]: values for values in elements}
            self.assertEqual(elements[0]["element"], "page_counter")
            self.assertEqual(found["version"]["version"], version)
            if hardware is None:
                self.assertNotIn("hardwareVersion", found)
                self.assertNotIn("barcode", found)
            else:
                self.assertEqual(found["hardwareVersion"]["version"], hardware)
                self.assertEqual(found["barcode"]["barcode"], "0000")
            for single in ("version", "hardwareVersion", "barcode"):
                count = [values["element"] for values in elements].count(single)
                self.assertEqual(count, 1 if single in found else 0)

    def test_log(self):
        for _, elements in self.pages():
            kinds = [values["element"] for values in elements]
            for repeated in ("global_settings", "global_stats", "profile_stats"):
                self.assertGreater(kinds.count(repeated), 1)
            profiles = [v for v in elements if v["element"].startswith("chemistry_")]
            current = [v for v in flashpage.latest(elements) if v in profiles]
            self.assertGreater(len(profiles), len(current))
            self.assertEqual(sum(v["scheduled_for_deletion"] for v in current), 1)
            self.assertEqual(sum(v["defaultprofile"] for v in current), 1)
            self.assertTrue(all(v["active"] for v in current if v["defaultprofile"]))
            self.assertEqual({v["chemistry"] for v in current}, {0, 1, 2})

    def test_limits(self):
        for name, elements in self.pages():
            current, full, nominal = self.HARDWARE[name][2:]
            for values in elements:
                if not values["element"].startswith("chemistry_"):
                    continue
                bulk = values["bulk_I"]
                self.assertLessEqual(bulk, current)
                if values["element"] == "chemistry_lithium":
                    self.assertTrue(12 <= values["full_V"] <= full)
                    self.assertTrue(5.07 <= values["min_start_V"] <= values["full_V"] * 0.9)
                    self.assertTrue(
                        values["min_start_V"] <= values["bulk_start_V"] <= values["full_V"]
                    )
                    self.assertTrue(0.05 <= values["start_I"] <= bulk)
                    self.assertTrue(0.05 <= values["complete_I"] <= bulk * 0.8)
                elif values["element"] == "chemistry_lead":
                    self.assertTrue(12 <= values["full_V"] <= full)
                    self.assertTrue(
                        values["full_V"] * 0.9 <= values["float_V"] <= values["full_V"]
                    )
                    self.assertTrue(0.05 <= values["full_V_min_I"] <= bulk * 0.8)
                else:
                    self.assertTrue(12 <= values["nominal_full_V"] <= nominal)
                    self.assertTrue(values["nominal_full_V"] <= values["max_V"] <= full)
                    self.assertTrue(0.1 <= values["start_I"] <= bulk)
                    self.assertTrue(5.07 <= values["bulk_start_V"] <= values["nominal_full_V"])
                    self.assertTrue(0.1 <= values["delta_V"] <= 1)


if __name__ == "__main__":
    unittest.main()
