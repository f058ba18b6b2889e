#!/usr/bin/env python3
"""Writes the firmware that is compiled in: catalogue/ and the list of its files in firmware.qrc.

The machines are virtual, so their firmware is a header and bytes that mean nothing. The files are
committed, so a build needs no Python. A firmware that has been given out never changes: a new
version is one more below, and one more in ../onboard/make_maps.py.
"""

import hashlib
import json
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))
TYPES = ["fabrino_single", "fabrino_dual", "fabrino_2", "fabrino_2x", "cubio_single", "cubio_dual"]
PAYLOAD_BYTES = 2048

FABRINO = {
    "5.9": "The last firmware of the first series.  Heats, homes and prints from the card. "
           "Recent files need a newer one.",
    "6.2": "Adds settings for preheating and for the display. Slows down where too few moves are "
           "planned ahead.  Sounds are fewer and shorter.",
    "6.3": "Switches heaters off that do not become warmer. Keeps the tension of the belts. "
           "Finds its place in a network by name.",
}
FABRINO_2 = {
    "5.9": "What the first machines left the factory with. Prints files of that time only. "
           "Please update.",
    "7.5": "Adds settings for preheating and for the display. Pauses when the filament ends.  "
           "Draws less current in the pauses.",
    "7.6": "Switches heaters off that do not become warmer. Stops when the door is opened. "
           "Finds its place in a network by name.",
}
CUBIO = {
    "3.9": "The last firmware of the first series. Heats, homes and prints.  The platform is "
           "levelled by hand.",
    "4.1": "Adds settings for preheating and for the display. Calibrates its end stops by a "
           "script.",
    "4.2": "Switches heaters off that do not become warmer. Keeps the tension of the belts. "
           "Homing is quieter.",
}
# Both Fabrinos of the first series are offered firmware under one name.
CATALOGUE = [
    ("fabrino", "fabrino_single", FABRINO),
    ("fabrino", "fabrino_dual", FABRINO),
    ("fabrino_2", "fabrino_2", FABRINO_2),
    ("fabrino_2x", "fabrino_2x", FABRINO_2),
    ("cubio", "cubio_single", CUBIO),
    ("cubio_dual", "cubio_dual", CUBIO),
]


def payload(seed):
    blocks = range(PAYLOAD_BYTES // hashlib.sha256().digest_size)
    return b"".join(hashlib.sha256(f"{seed} {i}".encode()).digest() for i in blocks)


def image(type_name, version):
    major, minor = (int(number) for number in version.split("."))
    body = payload(f"{type_name} {version}")
    head = struct.pack("<4sBBHHIH", b"OVFW", 1, TYPES.index(type_name) + 1, major, minor, len(body), 0)
    return head + body


def main():
    entries = []
    for machine, type_name, versions in CATALOGUE:
        for version, description in versions.items():
            name = f"{type_name}-{version}.fw"
            content = image(type_name, version)
            with open(os.path.join(HERE, "catalogue", name), "wb") as file:
                file.write(content)
            entries.append({
                "machine": machine,
                "type": type_name,
                "version": version,
                "description": description,
                "file": name,
                "size": len(content),
                "sha256": hashlib.sha256(content).hexdigest(),
            })
    with open(os.path.join(HERE, "catalogue", "catalogue.json"), "w", encoding="utf-8") as file:
        json.dump({"firmware": entries}, file, indent=2)
        file.write("\n")
    with open(os.path.join(HERE, "firmware.qrc"), "w", encoding="utf-8") as file:
        file.write('<RCC>\n    <qresource prefix="/trovek/firmware">\n')
        for name in ["catalogue.json"] + [entry["file"] for entry in entries]:
            file.write(f'        <file alias="{name}">catalogue/{name}</file>\n')
        file.write("    </qresource>\n</RCC>\n")


if __name__ == "__main__":
    main()
