#!/usr/bin/env python3
"""Writes every picture of the family as SVG beside this script."""

from itertools import chain
from pathlib import Path

import choices
import icons
import machines


def main():
    art = Path(__file__).resolve().parent
    for name, picture in chain(machines.pictures(), icons.pictures(), choices.pictures()):
        target = art / f"{name}.svg"
        target.parent.mkdir(exist_ok=True)
        target.write_text(picture.text(), encoding="utf-8")


if __name__ == "__main__":
    main()
