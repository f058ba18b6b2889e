"""The colours of the family."""

INK = "#2b3643"
PAPER = "#f6f8fa"
STEEL = "#dfe5ea"
SHADE = "#b3bec8"
GREY = "#66727e"

AMBER = "#f5a524"
EMBER = "#c4560f"
BLUE = "#2d9be0"
GREEN = "#3cb878"
RED = "#e2574c"
TILE = "#22384f"


def mix(colour, other, share):
    """The colour with a share (0 to 1) of the other one in it."""
    pair = [[int(c[i:i + 2], 16) for i in (1, 3, 5)] for c in (colour, other)]
    return "#" + "".join(f"{round(a + (b - a) * share):02x}" for a, b in zip(*pair))
