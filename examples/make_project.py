#!/usr/bin/python3
"""Makes the drawings of the example project (needs the package python3-ezdxf).

The drawings are kept beside this script, so it only runs to change them. Two runs give the same bytes.
"""

import math
import os
import sys
from pathlib import Path

import ezdxf
from ezdxf.enums import TextEntityAlignment

PROJECT = Path(__file__).resolve().parent / "project"


def new_drawing(layers):
    # Fixed dates and identifiers instead of those of this run.
    ezdxf.options.write_fixed_meta_data_for_testing = True
    drawing = ezdxf.new("R2010", setup=["linetypes"], units=4)
    for name, color, linetype in layers:
        drawing.layers.add(name, color=color, linetype=linetype)
    return drawing


def outline(space, points, layer):
    space.add_lwpolyline(points, close=True, dxfattribs={"layer": layer})


def label(space, text, position, height):
    entity = space.add_text(text, height=height, dxfattribs={"layer": "TEXT"})
    entity.set_placement(position, align=TextEntityAlignment.MIDDLE_CENTER)


def floor_plan():
    """A workshop of 12 m by 8 m with two rooms, a door and three windows; millimetres."""
    drawing = new_drawing(
        [("WALLS", 7, "CONTINUOUS"), ("OPENINGS", 5, "CONTINUOUS"), ("TEXT", 3, "CONTINUOUS")]
    )
    space = drawing.modelspace()
    outline(space, [(0, 0), (12000, 0), (12000, 8000), (0, 8000)], "WALLS")
    outline(space, [(300, 300), (7850, 300), (7850, 7700), (300, 7700)], "WALLS")
    outline(space, [(8150, 300), (11700, 300), (11700, 7700), (8150, 7700)], "WALLS")
    for left in (1500, 4500, 9200):
        outline(space, [(left, 7700), (left + 1500, 7700), (left + 1500, 8000), (left, 8000)], "OPENINGS")
    space.add_line((5000, 300), (5000, 1300), dxfattribs={"layer": "OPENINGS"})
    space.add_arc((5000, 300), 1000, 0, 90, dxfattribs={"layer": "OPENINGS"})
    label(space, "Workshop", (4075, 4000), 350)
    label(space, "Office", (9925, 4000), 350)
    return drawing


def flange(hole_count):
    """A flange of 160 mm with bolt holes, seen from the front; millimetres."""
    drawing = new_drawing(
        [("EDGES", 7, "CONTINUOUS"), ("CENTRES", 1, "CENTER"), ("TEXT", 3, "CONTINUOUS")]
    )
    space = drawing.modelspace()
    for radius in (80, 55, 30):
        space.add_circle((0, 0), radius, dxfattribs={"layer": "EDGES"})
    space.add_circle((0, 0), 67.5, dxfattribs={"layer": "CENTRES"})
    for index in range(hole_count):
        angle = 2 * math.pi * (index + 0.5) / hole_count
        centre = (round(67.5 * math.cos(angle), 6), round(67.5 * math.sin(angle), 6))
        space.add_circle(centre, 5.5, dxfattribs={"layer": "EDGES"})
    space.add_line((-90, 0), (90, 0), dxfattribs={"layer": "CENTRES"})
    space.add_line((0, -90), (0, 90), dxfattribs={"layer": "CENTRES"})
    label(space, f"{hole_count} x %%c11 on %%c135", (0, -100), 6)
    return drawing


def main():
    for path, drawing in {
        "plans/ground floor.dxf": floor_plan(),
        "parts/Gehäuse/flange.dxf": flange(8),
        # What a drawing program leaves behind: the version before the last save.
        "parts/Gehäuse/flange.bak": flange(6),
    }.items():
        target = PROJECT / path
        target.parent.mkdir(parents=True, exist_ok=True)
        drawing.saveas(target)


if __name__ == "__main__":
    # The library writes the elements of a set in the order of their hashes.
    if os.environ.get("PYTHONHASHSEED") != "0":
        os.execve(sys.executable, [sys.executable, *sys.argv], {**os.environ, "PYTHONHASHSEED": "0"})
    main()
