#!/usr/bin/env python3
"""Makes the drawings of training/drawings: of chance numbers, but built as drawing programs build theirs, so that the
counts of the training have the proportions of real drawings: long paths, styles of many properties, gradients that link
to others, and attributes that an import passes over.

usage: training/make_drawings.py FOLDER
"""
import random
import sys
from pathlib import Path

NAMESPACES = """xmlns="http://www.w3.org/2000/svg" xmlns:svg="http://www.w3.org/2000/svg"
   xmlns:xlink="http://www.w3.org/1999/xlink" xmlns:dc="http://purl.org/dc/elements/1.1/"
   xmlns:cc="http://web.resource.org/cc/" xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"
   xmlns:sodipodi="http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd"
   xmlns:inkscape="http://www.inkscape.org/namespaces/inkscape\""""

METADATA = """  <metadata id="metadata7">
    <rdf:RDF>
      <cc:Work rdf:about="">
        <dc:format>image/svg+xml</dc:format>
        <dc:type rdf:resource="http://purl.org/dc/dcmitype/StillImage" />
        <dc:title>A drawing of chance</dc:title>
        <dc:subject><rdf:Bag><rdf:li>shapes</rdf:li><rdf:li>chance</rdf:li></rdf:Bag></dc:subject>
        <cc:license rdf:resource="http://web.resource.org/cc/PublicDomain" />
      </cc:Work>
      <cc:License rdf:about="http://web.resource.org/cc/PublicDomain">
        <cc:permits rdf:resource="http://web.resource.org/cc/Reproduction" />
        <cc:permits rdf:resource="http://web.resource.org/cc/Distribution" />
      </cc:License>
    </rdf:RDF>
  </metadata>
"""

VIEW = """  <sodipodi:namedview id="base" pagecolor="#ffffff" bordercolor="#666666" borderopacity="1.0"
     inkscape:pageopacity="0.0" inkscape:pageshadow="2" inkscape:zoom="1.4142136" inkscape:cx="287.41982"
     inkscape:cy="146.59711" inkscape:window-width="1280" inkscape:window-height="949" inkscape:window-x="0"
     inkscape:window-y="25" inkscape:current-layer="layer1" inkscape:document-units="px" showgrid="false" />
"""


class Chance:
    def __init__(self, seed, decimals):
        self.random = random.Random(seed)
        self.decimals = decimals

    def number(self, low, high):
        return f"{self.random.uniform(low, high):.{self.random.choice(self.decimals)}f}"

    def pair(self, low, high):
        return self.number(low, high) + "," + self.number(low, high)

    def pairs(self, count, low, high):
        return " ".join(self.pair(low, high) for _ in range(count))

    def colour(self):
        return f"#{self.random.randrange(0x1000000):06x}"

    def between(self, low, high):
        return self.random.randint(low, high)

    def one_of(self, *choices):
        return self.random.choice(choices)


def gradients(chance, count):
    text = '  <defs id="defs4">\n'
    for i in range(count):
        text += f'    <linearGradient id="linearGradient{3000 + i}">\n'
        for stop in range(chance.between(2, 4)):
            text += (f'      <stop id="stop{4000 + 10 * i + stop}" offset="{chance.number(0, 1)}"'
                     f' style="stop-color:{chance.colour()};stop-opacity:{chance.one_of("1", "0", "0.5")};" />\n')
        text += "    </linearGradient>\n"
        ends = " ".join(f'{name}="{chance.number(0, 600)}"' for name in ("x1", "y1", "x2", "y2"))
        text += (f'    <linearGradient inkscape:collect="always" xlink:href="#linearGradient{3000 + i}"'
                 f' id="linearGradient{5000 + i}" gradientUnits="userSpaceOnUse" {ends}'
                 f' gradientTransform="matrix({chance.number(0, 2)},0,0,{chance.number(0, 2)},'
                 f'{chance.number(-90, 90)},{chance.number(-90, 90)})" />\n')
        if i % 3 == 0:
            circle = " ".join(f'{name}="{chance.number(0, 600)}"' for name in ("cx", "cy", "fx", "fy", "r"))
            text += (f'    <radialGradient inkscape:collect="always" xlink:href="#linearGradient{3000 + i}"'
                     f' id="radialGradient{6000 + i}" gradientUnits="userSpaceOnUse" {circle} />\n')
    return text + "  </defs>\n"


def full_style(chance, gradient_count):
    fill = chance.colour()
    if chance.between(0, 2) == 0:
        fill = f"url(#linearGradient{5000 + chance.between(0, gradient_count - 1)})"
    stroke = chance.one_of("none", "none", "#000000", chance.colour())
    return (f"opacity:{chance.one_of('1', '1', '0.5')};fill:{fill};fill-opacity:1;fill-rule:evenodd;stroke:{stroke};"
            f"stroke-width:{chance.one_of('1px', '1', chance.number(0, 4))};stroke-linecap:"
            f"{chance.one_of('butt', 'round')};stroke-linejoin:{chance.one_of('miter', 'round')};"
            "stroke-miterlimit:4;stroke-dasharray:none;stroke-opacity:1")


def absolute_path(chance):
    data = "M " + chance.pair(0, 700)
    for _ in range(chance.between(1, 12)):
        kind = chance.between(0, 5)
        if kind == 0:
            data += " L " + chance.pair(0, 700)
        else:
            data += " C " + chance.pairs(3, 0, 700)
    return data + chance.one_of(" z", " z ", "")


def relative_path(chance):
    data = "m " + chance.pair(0, 700)
    for _ in range(chance.between(1, 4)):
        kind = chance.between(0, 3)
        if kind == 0:
            data += " l " + chance.pairs(chance.between(1, 9), -20, 20)
        elif kind == 1:
            data += f" {chance.one_of('h', 'v')} " + chance.number(-20, 20)
        else:
            data += " c " + chance.pairs(3 * chance.between(1, 12), -20, 20)
    return data + " z"


def glued_path(chance):
    def glued(count):
        numbers = [chance.number(-20, 20) for _ in range(count)]
        return "".join(n if i == 0 or n[0] == "-" else "," + n for i, n in enumerate(numbers))

    data = "M" + chance.pair(0, 700)
    for _ in range(chance.between(2, 16)):
        letter, count = chance.one_of(("c", 6), ("c", 6), ("C", 6), ("l", 2), ("s", 4), ("h", 1), ("v", 1), ("L", 2))
        data += letter + glued(count)
    return data + "z"


def layered_drawing(chance, shapes):
    gradient_count = 12
    text = ('<?xml version="1.0" encoding="UTF-8" standalone="no"?>\n'
            "<!-- Created as drawing programs do -->\n"
            f'<svg\n   {NAMESPACES}\n   width="744.09448" height="1052.3622" id="svg2" version="1.0"\n'
            '   sodipodi:version="0.32" inkscape:version="0.46" sodipodi:docname="chance.svg">\n')
    text += gradients(chance, gradient_count) + VIEW + METADATA
    text += '  <g inkscape:label="Layer 1" inkscape:groupmode="layer" id="layer1">\n'
    for i in range(shapes):
        style = full_style(chance, gradient_count)
        if i % 6 == 0:
            moved = chance.one_of(f"translate({chance.pair(-90, 90)})",
                                  f"matrix({','.join(chance.number(-1, 1) for _ in range(4))},{chance.pair(0, 90)})")
            text += f'    <g id="g{2000 + i}" transform="{moved}">\n'
        kind = chance.between(0, 11)
        if kind == 0:
            text += (f'      <rect style="{style}" id="rect{7000 + i}" width="{chance.number(1, 200)}"'
                     f' height="{chance.number(1, 200)}" x="{chance.number(0, 700)}" y="{chance.number(0, 700)}" />\n')
        elif kind == 1:
            radius = chance.number(1, 90)
            centre = (chance.number(0, 700), chance.number(0, 700))
            text += (f'      <path sodipodi:type="arc" style="{style}" id="path{7000 + i}" sodipodi:cx="{centre[0]}"'
                     f' sodipodi:cy="{centre[1]}" sodipodi:rx="{radius}" sodipodi:ry="{radius}" d="M'
                     f' {chance.pair(0, 700)} A {radius},{radius} 0 1 1 {chance.pair(0, 700)} A {radius},{radius}'
                     f' 0 1 1 {chance.pair(0, 700)} z" transform="translate({chance.pair(-90, 90)})" />\n')
        else:
            data = absolute_path(chance) if i % 2 else relative_path(chance)
            nodes = "".join(chance.one_of("c", "s", "z") for _ in range(9))
            text += (f'      <path\n         style="{style}"\n         d="{data}"\n         id="path{7000 + i}"\n'
                     f'         sodipodi:nodetypes="{nodes}" />\n')
        if i % 6 == 5 or i == shapes - 1:
            text += "    </g>\n"
    text += ('    <text xml:space="preserve" style="font-size:12px;font-style:normal;font-weight:normal;fill:#000000;'
             'fill-opacity:1;stroke:none;font-family:Sans" x="120.5" y="300.25" id="text8000">'
             '<tspan sodipodi:role="line" id="tspan8002" x="120.5" y="300.25">Chance</tspan></text>\n')
    return text + "  </g>\n</svg>\n"


def exported_drawing(chance, shapes):
    text = ('<?xml version="1.0" encoding="utf-8"?>\n'
            '<!DOCTYPE svg PUBLIC "-//W3C//DTD SVG 1.1//EN" "http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd">\n'
            '<svg version="1.1" id="Layer_1" xmlns="http://www.w3.org/2000/svg"'
            ' xmlns:xlink="http://www.w3.org/1999/xlink" x="0px" y="0px" width="700px" height="700px"'
            ' viewBox="0 0 700 700" enable-background="new 0 0 700 700" xml:space="preserve">\n')
    for i in range(shapes):
        paint = f'fill="{chance.one_of("none", chance.colour(), chance.colour())}"'
        if chance.between(0, 2) == 0:
            paint += f' stroke="{chance.colour()}" stroke-width="{chance.number(0, 4)}" stroke-linecap="round"'
        if i % 8 == 0:
            text += "<g>\n"
        kind = chance.between(0, 11)
        if kind == 0:
            text += f'\t<polygon {paint} points="{chance.pairs(chance.between(3, 9), 0, 700)} "/>\n'
        elif kind == 1:
            text += (f'\t<line {paint} x1="{chance.number(0, 700)}" y1="{chance.number(0, 700)}"'
                     f' x2="{chance.number(0, 700)}" y2="{chance.number(0, 700)}"/>\n')
        elif kind == 2:
            text += (f'\t<ellipse {paint} cx="{chance.number(0, 700)}" cy="{chance.number(0, 700)}"'
                     f' rx="{chance.number(1, 90)}" ry="{chance.number(1, 90)}"/>\n')
        else:
            text += f'\t<path {paint} d="{glued_path(chance)}"/>\n'
        if i % 8 == 7 or i == shapes - 1:
            text += "</g>\n"
    return text + "</svg>\n"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "layered.svg").write_text(layered_drawing(Chance(1, (4, 5, 5, 6, 7)), 72))
    (folder / "exported.svg").write_text(exported_drawing(Chance(2, (0, 2, 3, 3)), 120))


main()
