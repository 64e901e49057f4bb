#!/usr/bin/env python3
"""Makes the simulated charger's own profile pages, one for each hardware.

    make_pages.py          writes the files beside this script
    make_pages.py --check  tells whether they are up to date

Each page is a log as a charger leaves it: a snapshot as the suite writes it, and behind it what the
charger has added since: newer statistics, a changed profile, a deleted one, other settings.
"""

import pathlib
import sys
from fractions import Fraction

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True  # nothing but the pages is left in the source tree
sys.path.insert(0, str(HERE.parent.parent / "tests" / "support"))

import flashpage  # noqa: E402 (its folder is known only now)


def one_decimal(value):
    """A value as the suite rounds it, half upwards."""
    return float(Fraction(int(Fraction(str(value)) * 10 + Fraction(1, 2)), 10))


def profile(chemistry, number, title, description, values, **status):
    element = {
        "element": chemistry,
        "profile_id": None,
        "chemistry": number,
        "active": True,
        "defaultprofile": False,
        "modifiable": True,
        "scheduled_for_deletion": False,
        "extraneous1": 0,
        "title": title,
        "description": description,
    }
    element.update(values)
    element.update(status)
    return element


def lithium(title, description, full, bulk, complete=0.15, start=0.2, **status):
    values = {
        "min_start_V": one_decimal(full / 2),
        "start_I": start,
        "bulk_start_V": one_decimal(full * 70 / 100),
        "bulk_I": bulk,
        "full_V": full,
        "complete_I": complete,
    }
    return profile("chemistry_lithium", 0, title, description, values, **status)


def nickel(title, description, nominal, bulk, **status):
    values = {
        "start_I": 0.5,
        "bulk_start_V": one_decimal(nominal * 8 / 10),
        "bulk_I": bulk,
        "nominal_full_V": nominal,
        "delta_V": one_decimal(nominal / 120),
        "external_thermistor": False,
        "max_T": 55,
        "dTdt": 1,
        "max_V": one_decimal(nominal * 14 / 10),
        "topup_I": 0.5,
        "topup_time": 1,
    }
    return profile("chemistry_nickel", 1, title, description, values, **status)


def lead(title, description, full, bulk, floating, complete=0.15, **status):
    values = {
        "bulk_I": bulk,
        "full_V": full,
        "full_V_min_I": complete,
        "full_V_max_time": 4,
        "float_V": floating,
    }
    return profile("chemistry_lead", 2, title, description, values, **status)


def settings(**changed):
    values = {
        "element": "global_settings",
        "brightness": 5,
        "screensaver_delay_m": 5,
        "flip_display": False,
        "longpress_time_cs": 0.8,
        "shortpress_time_cs": 0.02,
        "release_debounce_time_cs": 0.01,
        "cable_resistance_mOhm": 0.087,
        "splashscreen_time_decis": 2,
        "current_tare_period_minutes": 30,
        "voltage_gain_tweak_vv": -12,
        "current_gain_tweak_vv": 35,
        "voltage_offset_tweak_lsb": -3,
        "temperature_limit_degrees_celsius": 70,
    }
    values.update(changed)
    return values


def counter(element, name, raw):
    """A counted value as it is shown. It must survive six significant digits, so that a page that
    the suite writes back holds the very same count."""
    field = flashpage.field_named(element, name)
    shown = raw * field.scale
    rounded = Fraction("%.6g" % float(shown))
    if int(rounded / field.scale + Fraction(1, 2)) != raw:
        sys.exit("%s: %d does not survive six digits" % (name, raw))
    return shown


def profile_stats(profile_id, watt_hours, amp_hours, seconds, count):
    return {
        "element": "profile_stats",
        "profile_id": profile_id,
        "Wh": counter("profile_stats", "Wh", watt_hours),
        "Ah": counter("profile_stats", "Ah", amp_hours),
        "chargetime_s": counter("profile_stats", "chargetime_s", seconds),
        "charge_count": count,
    }


def global_stats(charge_seconds, life_seconds, cycles, amp_seconds, watt_seconds):
    return {
        "element": "global_stats",
        "totalchargetime": counter("global_stats", "totalchargetime", charge_seconds),
        "lifetime": counter("global_stats", "lifetime", life_seconds),
        "charge_cycles": cycles,
        "ah_total": counter("global_stats", "ah_total", amp_seconds),
        "wh_total": counter("global_stats", "wh_total", watt_seconds),
    }


def page(count, version, hardware, profiles, changed, deleted):
    """The log of a charger with these profiles. Of them `changed` (an id and what is new) has a
    later copy, and `deleted` (an id) one that marks it so."""
    profiles = [dict(values, profile_id=number) for number, values in enumerate(profiles)]
    snapshot = [
        {"element": "page_counter", "count": count},
        {"element": "version", "version": version},
        settings(),
    ]
    # The last profile was never used.
    for number in range(len(profiles) - 1):
        used = number + 1
        snapshot.append(
            profile_stats(number, 1234 * used, 2340 * used, 5400 * used, 3 * used)
        )
    snapshot += profiles
    snapshot.append(global_stats(72000, 180000, 24, 144000, 324000))
    if hardware is not None:
        snapshot.append({"element": "hardwareVersion", "version": hardware})
        snapshot.append({"element": "barcode", "barcode": "0000"})

    changed_id, new_values = changed
    later = [
        profile_stats(0, 1890, 3105, 7200, 4),
        dict(profiles[changed_id], **new_values),
        settings(brightness=7, screensaver_delay_m=10),
        profile_stats(0, 2467, 4012, 9000, 5),
        dict(profiles[deleted], scheduled_for_deletion=True, active=False),
        global_stats(75600, 185400, 26, 151200, 338400),
    ]
    image = flashpage.encode_page(snapshot + later)
    # A read leaves out blank rows, and the suite tells the end of the log by a blank word behind it.
    if len(image) % 256 == 0:
        sys.exit("the log ends with a row: no blank word behind it would be read")
    return image


def pages():
    """The pages by name."""
    lithium_48 = [
        lithium("36V Li(10s)", "Fast Charge", 42, 8, defaultprofile=True),
        lithium("36V Li(10s)", "Stnd Charge", 42, 4),
        lithium("48V Li(13s)", "85% Charge", 52.6, 4, modifiable=False),
        lithium("52V Li(14s)", "Fast Charge", 58.8, 7, active=False),
        nickel("36V NiMH", "Custom", 36, 4),
        lead("36V SLA", "Stnd Charge", 43.2, 4, 40.5, complete=0.5),
        lead("48V SLA", "Stnd Charge", 57.6, 4, 54, complete=0.5),
    ]
    return {
        "24v": page(
            7,
            2,
            2,
            [
                lead("12V SLA", "Stnd Charge", 14.4, 8, 13.5, complete=0.4),
                lead("24V SLA", "Fast Charge", 28.8, 15, 27.1, complete=0.4, active=False),
                lithium("22V Li (6s)", "Fast Charge", 25.2, 15, 0.4, 0.4, defaultprofile=True),
                lithium("24V Li (7s)", "85% Charge", 28.4, 15, 0.4, 0.4, modifiable=False),
                nickel("24V NiCd", "Custom", 24, 8),
            ],
            (0, {"bulk_I": 6}),
            3,
        ),
        "48v": page(41, 2, 4, lithium_48, (1, {"bulk_I": 3.5, "complete_I": 0.25}), 5),
        "72v": page(
            130,
            2,
            5,
            [
                lithium("72V Li(20s)", "Full Charge", 84, 5, defaultprofile=True),
                lithium("72V Li(20s)", "85% Charge", 80.8, 5),
                lithium("88V Li(24s)", "Full Charge", 100.8, 5, active=False),
                lithium("60V LiFe", "(20s) Full", 72, 3, modifiable=False),
                nickel("72V NiMH", "Custom", 72, 2.5),
                lead("72V SLA", "Stnd Charge", 86.4, 4, 81.2, complete=0.5),
            ],
            (4, {"topup_time": 0.5, "external_thermistor": True}),
            2,
        ),
        "48v-v1": page(3, 1, None, lithium_48[:2] + lithium_48[4:6], (3, {"float_V": 40}), 1),
    }


def main(arguments):
    check = arguments[1:] == ["--check"]
    for name, image in pages().items():
        file = HERE / (name + ".hex")
        text = flashpage.to_hex(image)
        if not check:
            file.write_text(text, encoding="ascii")
        elif not file.exists() or file.read_text(encoding="ascii") != text:
            sys.exit("%s is not up to date: run make_pages.py" % file.name)


if __name__ == "__main__":
    main(sys.argv)
