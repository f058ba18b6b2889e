#!/usr/bin/env python3
"""Writes the maps in maps/ and the list of them in onboard_maps.qrc.

What the firmwares have in common is said once here, and the settings get their places one behind
the other. The files are committed, so a build needs no Python. A firmware that has been given out
never changes its layout: a new version is one more below.
"""

import json
import os

HERE = os.path.dirname(os.path.abspath(__file__))
HEADER_BYTES = 16
MEMORY_BYTES = 4096
GROUP_ALIGNMENT = 16
SIZES = {"B": 1, "b": 1, "H": 2, "h": 2, "I": 4, "i": 4, "f": 4, "d": 8, "q": 8, "s": 16}
AXES = "XYZAB"


class Machine:
    def __init__(self, name, extruders, platform, volume, steps, level, version, age):
        self.name = name
        self.version = version
        self.tools = ["right", "left"][:extruders]
        self.platform = platform
        self.volume = volume
        self.steps = steps
        # 1 the Cubios, 2 the first Fabrinos, 3 their successors
        self.level = level
        # "old" has less than the others, "new" more
        self.old = age == "old"
        self.newer = age == "new"
        self.hottest = {1: 250, 2: 270, 3: 280}[level]

    @property
    def x3g(self):
        return self.level == 3


CUBIO = ((100, 100, 120), (47.06, 47.06, 200, 50.23, 50.23), 1)
FABRINO = ((220, 145, 150), (94.12, 94.12, 400, 96.39, 96.39), 2)
FABRINO_2 = ((285, 150, 155), (88.89, 88.89, 400, 96.39, 96.39), 3)
FABRINO_2X = ((245, 150, 155), (88.89, 88.89, 400, 96.39, 96.39), 3)

MODELS = [
    (("cubio_single", 1, True, *CUBIO), {"3.9": "old", "4.1": "", "4.2": "new"}),
    (("cubio_dual", 2, True, *CUBIO), {"3.9": "old", "4.1": "", "4.2": "new"}),
    (("fabrino_single", 1, True, *FABRINO), {"5.9": "old", "6.2": "", "6.3": "new"}),
    (("fabrino_dual", 2, True, *FABRINO), {"5.9": "old", "6.2": "", "6.3": "new"}),
    (("fabrino_2", 1, False, *FABRINO_2), {"5.9": "old", "7.5": "", "7.6": "new"}),
    (("fabrino_2x", 2, True, *FABRINO_2X), {"5.9": "old", "7.5": "", "7.6": "new"}),
]
MACHINES = [Machine(*model, version, age) for model, ages in MODELS for version, age in ages.items()]


def leaf(types, factory, tooltip, unit=None, constraints=None, **more):
    values = factory if isinstance(factory, list) else [factory]
    entry = {"type": types, "factory": values}
    if unit:
        entry["unit"] = unit
    if constraints:
        entry["constraints"] = constraints
    entry.update(more)
    entry["tooltip"] = tooltip
    return entry


def switch(on, tooltip):
    return leaf("B", int(on), tooltip, constraints="l,0,1")


def axis_bits(bits, tooltip):
    return leaf("B", bits, tooltip, constraints="m,0,31", axis_expand="True")


def fixed(value, tooltip, unit=None):
    return leaf("H", value, tooltip, unit, floating_point="True")


def celsius(value, most, tooltip):
    return leaf("H", value, tooltip, "°C", f"m,0,{most}")


def identity(m):
    return {
        "machine_name": leaf("s", "Orvane", "The name that the machine shows and is known by."),
        "serial_number": leaf("s", "0000000000", "The number on the plate at the back.", length=24),
        "vendor_id": leaf("H", 0x23C1, "The maker's number, as the USB port tells it."),
        "product_id": leaf("H", 0xB000 + m.level * 16 + len(m.tools), "The model's number, as the USB port tells it."),
        "toolhead_count": leaf("B", len(m.tools), "How many extruders the machine has.", constraints="l,1,2"),
        "heated_platform": switch(m.platform, "Whether a heated build platform is fitted."),
        "language": leaf("B", 0, "The display's language: 0 English, 1 German, 2 French, 3 Spanish.", constraints="l,0,1,2,3"),
    }


def axes(m):
    x, y, z = m.volume
    group = {
        "axis_inversion": axis_bits(0b00110, "Motors that turn the other way round."),
        "endstop_inversion": axis_bits(0b11111, "End stops that open when they are touched."),
        "hold_after_build": axis_bits(0b00100, "Motors that stay powered when a build has ended."),
        "axis_home_offsets": leaf("iiiii", [int(x * m.steps[0] / 2), int(y * m.steps[1] / 2), 0, 0, 0],
                                  "Steps from the end stops to the middle of the platform.", "steps"),
        "axis_lengths": leaf("IIIII", [int(l * s) for l, s in zip((x, y, z), m.steps)] + [100000, 100000],
                             "How far each axis may go.", "steps"),
        "axis_steps_per_mm": leaf("ddddd", list(m.steps), "Motor steps for a millimetre.", "steps/mm"),
        "axis_max_feedrates": leaf("IIIII", [18000, 18000, 1170, 1600, 1600], "The highest speed of each axis.", "mm/min"),
        "backlash": leaf("fffff", [0.0, 0.0, 0.0, 0.0, 0.0], "Play that is made up for when an axis turns round.", "mm"),
        "stepper_currents": leaf("BBBBB", [118, 118, 40, 118, 118], "Current of the motors, in 127ths of the highest.",
                                 constraints="m,0,127"),
        "z_probe_offset": leaf("h", -120, "Height of the probe over the nozzle.", "µm", "m,-2000,2000"),
    }
    if m.newer:
        group["belt_tension"] = leaf("HH", [110, 108], "What the belts of X and Y were last tuned to.", "Hz", "m,40,250")
    return group


def acceleration(m):
    return {
        "active": switch(True, "Whether motion speeds up and slows down; off is for tests only."),
        "axis_rates": leaf("hhhhh", [1000, 1000, 150, 2000, 2000], "The highest acceleration of each axis.", "mm/s²", "m,1,10000"),
        "max_speed_changes": leaf("HHHHH", [30, 30, 10, 20, 20], "Steps of speed that need no acceleration.", "mm/s", "m,1,200"),
        "extruder_rate": leaf("h", 2000, "Acceleration of moves that only extrude.", "mm/s²", "m,1,10000"),
        "minimum_segment_time": leaf("f", 0.02, "Shorter segments are slowed down.", "s", "m,0,1"),
        "advance": {
            "active": switch(m.x3g, "Whether pressure in the nozzle is reckoned with."),
            "jkn_advance": leaf("ff", [0.0001, 0.055], "The two factors of nozzle pressure.", constraints="m,0,10"),
            "deprime": {
                "on_travel": switch(True, "Whether filament is drawn back on travel."),
                "steps": leaf("hh", [16, 16], "Steps that are drawn back, for each extruder.", "steps", "m,0,1000"),
            },
        },
        "slowdown": {
            "active": switch(True, "Whether the machine slows down when too few moves are planned ahead."),
            "threshold": leaf("B", 4, "Planned moves below which it slows down.", constraints="m,1,15"),
        },
    }


def pid(p, i, d, what):
    return {
        "p": fixed(p, f"Proportional part of the {what}'s control."),
        "i": fixed(i, f"Integral part of the {what}'s control."),
        "d": fixed(d, f"Derivative part of the {what}'s control."),
    }


def thermistor(what):
    return {
        "beta": leaf("H", 4066, f"Beta value of the {what}'s thermistor.", "K", "m,1000,10000"),
        "resistance": leaf("I", 100000, f"Resistance of the {what}'s thermistor at 25 °C.", "Ω", "m,100,1000000"),
        "correction": leaf("b", 0, f"Added to every temperature that is read at the {what}.", "°C", "m,-20,20"),
        "table_readings": leaf("HHHHHHHH", [84, 110, 147, 201, 283, 413, 610, 849],
                               f"Readings at the {what} for which the temperature is known.", constraints="m,0,1023"),
        "table_celsius": leaf("hhhhhhhh", [300, 270, 240, 210, 180, 150, 110, 60],
                              "The temperatures at these readings.", "°C", "m,-40,400"),
    }


def toolhead(m, side):
    what = f"{side} toolhead"
    group = {
        "pid": pid(7.0, 0.325, 36.0, what),
        "fan": {
            "active": switch(True, f"Whether the {what} is cooled where filament enters."),
            "start_temperature": leaf("B", 50, "The fan runs above this.", "°C", "m,20,120"),
            "speed": leaf("B", 255, "Of 255, at full speed.", constraints="m,0,255"),
        },
        "sensor": {"thermistor": thermistor(what)} if m.level < 3 else {
            "thermocouple": {
                "gain": leaf("d", 1.0, f"Gain of the {what}'s thermocouple amplifier.", constraints="m,0.5,2"),
                "offset_microvolts": leaf("i", 0, "Added to what the amplifier reads.", "µV", "m,-100000,100000"),
            },
            "thermistor": thermistor(what),
        },
        "max_temperature": celsius(m.hottest, m.hottest, f"The {what} takes no higher target."),
        "hours": leaf("I", 0, f"How long the {what} has been hot.", "h"),
        "nozzle_diameter": fixed(0.4 * 256 // 1 / 256, "Diameter of the nozzle's opening.", "mm"),
    }
    return group


def toolheads(m):
    group = {side: toolhead(m, side) for side in m.tools}
    if len(m.tools) == 2:
        group["offset_settings"] = leaf("iii", [int(34 * m.steps[0]), 0, 0], "Steps from the right nozzle to the left one: X, Y, Z.", "steps")
        group["system_offsets"] = leaf("fff", [34.0, 0.0, 0.0], "Distance of the nozzles that sliced files are made for.", "mm")
        group["ditto_printing"] = switch(False, "Whether the left extruder repeats what the right one does.")
    return group


def platform(m):
    return {
        "pid": pid(5.0, 0.125, 20.0, "platform"),
        "sensor": {"thermistor": thermistor("platform")},
        "max_temperature": celsius(120, 130, "The platform takes no higher target."),
        "hold_after_build": switch(False, "Whether it stays warm when a build has ended."),
        "leveling": {
            "corners": leaf("hhhh", [0, 0, 0, 0], "Height of the corners, from the front left one clockwise.", "µm", "m,-1000,1000"),
            "skew": leaf("d", 0.0, "How far X and Y are from a right angle.", "°", "m,-2,2"),
        },
    }


def leds(m):
    return {
        "color": leaf("B", 0, "Of the light in the frame: 0 white, 1 red, 2 orange, 3 green, 4 blue, 5 purple, 6 off, 7 the custom one.",
                      constraints="l,0,1,2,3,4,5,6,7"),
        "custom_color": {
            "red": leaf("B", 255, "Red part of the custom colour."),
            "green": leaf("B", 255, "Green part of the custom colour."),
            "blue": leaf("B", 255, "Blue part of the custom colour."),
        },
        "blink": {
            "heating": switch(True, "Whether the light blinks while the machine heats."),
            "done": switch(True, "Whether the light blinks when a build has ended."),
            "period": leaf("H", 1000, "From one blink to the next.", "ms", "m,100,10000"),
        },
    }


def buzzer(m):
    return {
        "active": switch(True, "Whether the machine makes sounds."),
        "repeats": leaf("B", 3, "How often a sound is repeated.", constraints="m,0,20"),
        "pitches": leaf("HHH", [880, 1175, 1760], "The tones for a start, an end and an error.", "Hz", "m,50,10000"),
    }


def filament(m):
    group = {
        "diameter": leaf("d", 1.75, "Diameter of the filament.", "mm", "m,1,3.2"),
        "load_speed": leaf("H", 300, "Speed at which filament is loaded.", "mm/min", "m,10,2000"),
        "unload_speed": leaf("H", 400, "Speed at which filament is unloaded.", "mm/min", "m,10,2000"),
        "load_length": leaf("H", 60, "How much is pushed in on loading.", "mm", "m,1,1000"),
        "sensor_active": switch(m.x3g, "Whether a build is paused when the filament ends."),
    }
    for side in m.tools:
        group[side] = {
            "material": leaf("B", 0, "What is loaded: 0 PLA, 1 ABS, 2 dissolvable, 3 flexible.", constraints="l,0,1,2,3"),
            "spool_left": leaf("f", 1000.0, "What is left on the spool.", "g", "m,0,10000"),
            "density": leaf("f", 1.24, "Of the loaded material.", "g/cm³", "m,0.5,5"),
        }
    return group


def preheat(m):
    group = {side: celsius(220, m.hottest, f"Target of the {side} toolhead.") for side in m.tools}
    if m.platform:
        group["platform"] = celsius(60, 130, "Target of the platform.")
    group["timeout"] = leaf("H", 30, "After this time without a build everything cools down.", "min", "m,1,600")
    return group


def profile(m, name, tool, plate):
    group = {
        "name": leaf("s", name, "What the display calls this profile."),
        "home_position": leaf("hhh", [0, 0, 0], "Correction of the home position: X, Y, Z.", "steps"),
        "fan_percent": leaf("B", 50, "Cooling of the printed part.", "%", "m,0,100"),
    }
    for side in m.tools:
        group[f"{side}_temperature"] = celsius(tool, m.hottest, f"Target of the {side} toolhead.")
    if m.platform:
        group["platform_temperature"] = celsius(plate, 130, "Target of the platform.")
    return group


def profiles(m):
    names = [("PLA", 220, 60), ("ABS", 230, 110), ("Flexible", 225, 40), ("Draft", 225, 60)]
    return {f"profile_{i + 1}": profile(m, *names[i]) for i in range(4 if m.x3g else 2)}


def build_stats(m):
    group = {
        "builds_started": leaf("I", 0, "How many builds were begun."),
        "builds_finished": leaf("I", 0, "How many builds came to their end."),
        "build_hours": leaf("I", 0, "How long the machine has built.", "h"),
        "last_build_name": leaf("s", "", "What was built last.", length=32),
        "motor_steps": leaf("q", 0, "Steps of all motors together."),
    }
    for side in m.tools:
        group[f"{side}_filament_used"] = leaf("q", 0, f"What the {side} extruder has pushed.", "µm", "m,0,9000000000000000")
    return group


def display(m):
    return {
        "contrast": leaf("B", 120, "Of the display's letters."),
        "rotation": leaf("b", 0, "Degrees by which the picture is tilted for who stands above it.", "°", "m,-45,45"),
        "menu_timeout": leaf("H", 60, "After this time without a button the status is shown.", "s", "m,5,3600"),
        "show_remaining_time": switch(True, "Whether the time to the end is shown."),
    }


def safety(m):
    return {
        "heat_timeout": leaf("H", 300, "A heater that does not become warmer in this time is switched off.", "s", "m,30,3600"),
        "runaway_difference": leaf("B", 20, "Further from the target than this, a heater is switched off.", "°C", "m,5,60"),
        "door_switch": switch(m.newer, "Whether the motors stop when the door is opened."),
    }


def network(m):
    return {
        "host_name": leaf("s", "orvane", "The name under which the machine is found.", length=32),
        "address": leaf("BBBB", [0, 0, 0, 0], "Its fixed address; zeros let the network choose."),
        "clock_correction": leaf("q", 0, "Added to the time that the network tells.", "ms"),
    }


def settings(m):
    tree = {
        "identity": identity(m),
        "axes": axes(m),
        "acceleration": acceleration(m),
        "toolheads": toolheads(m),
    }
    if m.platform:
        tree["build_platform"] = platform(m)
    tree["filament"] = filament(m)
    if not m.old:
        tree["preheat"] = preheat(m)
    if m.level > 1:
        tree["leds"] = leds(m)
        tree["buzzer"] = buzzer(m)
        tree["profiles"] = profiles(m)
    if not m.old:
        tree["display"] = display(m)
    if m.newer:
        tree["safety"] = safety(m)
        tree["network"] = network(m)
    tree["build_stats"] = build_stats(m)
    return tree


def place(tree, offset):
    """The tree as the file has it, each setting behind the one before; and the next free place."""
    placed = {}
    for name, entry in tree.items():
        if "type" in entry and isinstance(entry["type"], str):
            placed[name] = {"offset": f"0x{offset:04x}", **entry}
            offset += len(entry["type"]) * entry.get("length", SIZES[entry["type"][0]])
        else:
            group, offset = place(entry, offset)
            placed[name] = {"sub_map": group}
    return placed, offset


def text(value):
    return json.dumps(value, ensure_ascii=False)


def write_leaf(entry, indent):
    members = {k: v for k, v in entry.items() if k not in ("offset", "type", "factory", "tooltip")}
    line = ", ".join(f"{text(k)}: {text(entry[k])}" for k in ("offset", "type", "factory"))
    lines = [line + ","]
    if members:
        lines.append(", ".join(f"{text(k)}: {text(v)}" for k, v in members.items()) + ",")
    lines.append(f'"tooltip": {text(entry["tooltip"])}')
    return "{\n" + "".join(f"{indent}  {l}\n" for l in lines) + indent + "}"


def write_group(group, indent):
    inner = indent + "  "
    parts = []
    for name, entry in group.items():
        if "sub_map" in entry:
            body = '{"sub_map": ' + write_group(entry["sub_map"], inner) + "}"
        else:
            body = write_leaf(entry, inner)
        parts.append(f"{inner}{text(name)}: {body}")
    return "{\n" + ",\n".join(parts) + "\n" + indent + "}"


def make_map(m):
    offset = HEADER_BYTES
    tree = {}
    for name, group in settings(m).items():
        placed, offset = place({name: group}, offset)
        tree.update(placed)
        offset += -offset % GROUP_ALIGNMENT
    assert offset <= MEMORY_BYTES, (m.name, offset)
    head = f'{{\n  "machine_type": {text(m.name)},\n  "firmware_version": {text(m.version)},\n'
    return head + '  "eeprom_map": ' + write_group(tree, "  ") + "\n}\n"


def main():
    files = []
    for m in MACHINES:
        name = f"maps/{m.name}-{m.version}.json"
        with open(os.path.join(HERE, name), "w", encoding="utf-8") as file:
            file.write(make_map(m))
        files.append(name)
    with open(os.path.join(HERE, "onboard_maps.qrc"), "w", encoding="utf-8") as file:
        file.write('<RCC>\n    <qresource prefix="/trovek/onboard_maps">\n')
        for name in files:
            file.write(f'        <file alias="{os.path.basename(name)}">{name}</file>\n')
        file.write("    </qresource>\n</RCC>\n")


if __name__ == "__main__":
    main()
