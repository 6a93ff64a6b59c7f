#!/usr/bin/env python3
"""Reads the command stream of the SVG import filter through ctypes and prints its lines, curves, polygons and fills.

usage: read_stream.py [--libraries FOLDER] DRAWING.svg

The layouts are those of the host guide. One process makes one import, since a loaded filter serves only one.
"""
import argparse
import ctypes
import os
import sys
from ctypes import POINTER, c_double, c_int, c_int32, c_int64, c_ubyte, c_uint16, c_uint32, c_uint64, c_void_p

KEY_BEZI, KEY_ENDF, KEY_FILL, KEY_LINE, KEY_PLYR = 3, 10, 12, 17, 29
KEY_PFDF, KEY_FDEF, KEY_PFOL = 46, 47, 127
NO_COLOUR = 0xFFFFFFFF


class ImportCommand(ctypes.Structure):
    # A value stands in the low half of `data`, where the machine has its bytes in that order.
    _fields_ = [('key', c_uint32), ('size', c_uint32), ('data', c_uint64), ('unused', c_uint64 * 2)]

    @property
    def value(self):
        return self.data & 0xFFFFFFFF

    def payload(self, record):
        return ctypes.cast(c_void_p(self.data), POINTER(record)).contents


class Packed(ctypes.Structure):
    _pack_ = 1


class LineRecord(Packed):
    _fields_ = [('reserved', c_ubyte * 16), ('points', c_double * 4)]


class BezierRecord(Packed):
    _fields_ = [('reserved0', c_ubyte * 16), ('points', c_double * 8), ('reserved1', c_ubyte * 28)]


class PolygonSide(Packed):
    _fields_ = [('x', c_double), ('y', c_double), ('flags', c_uint32)]


class PolygonRecord(Packed):
    _fields_ = [('classTable', c_void_p), ('hostData0', c_ubyte * 8), ('flags', c_uint32), ('scaleX', c_double),
                ('scaleY', c_double), ('hostData1', c_ubyte * 8), ('sides', POINTER(PolygonSide)),
                ('hostData2', c_ubyte * 32)]


class GradientPart(Packed):
    _fields_ = [('gradientForm', c_uint32), ('gradientFlag', c_uint32), ('stopListFlag', c_uint32),
                ('reserved0', c_ubyte * 4), ('colourA', c_double * 3), ('reserved1', c_ubyte * 24),
                ('colourB', c_double * 3), ('reserved2', c_ubyte * 24), ('stopListStart', c_uint16),
                ('reserved3', c_ubyte * 6), ('midPoint', c_double), ('stopListOn', c_uint16),
                ('reserved4', c_ubyte * 2), ('stopCount', c_uint32), ('stopColours', c_uint32 * 101),
                ('stopPositions', c_int32 * 101), ('angle', c_double)]


class PatternPart(Packed):
    _fields_ = [('reserved0', c_ubyte * 8), ('tilePath', c_uint16 * 128), ('tileColour', c_uint32),
                ('tileColourOn', c_uint32), ('tileScaleX', c_double), ('tileScaleY', c_double)]


class FillPart(ctypes.Union):
    _pack_ = 1
    _fields_ = [('gradient', GradientPart), ('pattern', PatternPart), ('part', c_ubyte * 1048)]


class FillDefinition(Packed):
    _anonymous_ = ['kind']
    _fields_ = [('fillClass', c_uint32), ('inverseMatrix', c_double * 6), ('forwardMatrix', c_double * 6),
                ('fillType', c_uint32), ('kind', FillPart), ('fillScale', c_double), ('reserved0', c_ubyte * 40),
                ('tileHeight', c_double), ('reserved1', c_ubyte * 8)]


def colour(bgr):
    if bgr == NO_COLOUR:
        return 'none'
    return '#%02x%02x%02x' % (bgr & 0xFF, bgr >> 8 & 0xFF, bgr >> 16 & 0xFF)


def numbers(values):
    return ' '.join('%.3f' % value for value in values)


def describe_fill(fill):
    if fill.fillType == 10:
        units = fill.pattern.tilePath
        path = bytes(units).decode('utf-16-le').split('\0')[0]
        return 'fill pattern %s' % path
    if fill.fillType == 1:
        return None
    stops = zip(fill.gradient.stopPositions[:fill.gradient.stopCount], fill.gradient.stopColours)
    return 'fill %s gradient %.3f %s' % ('radial' if fill.fillType == 5 else 'linear', -fill.fillScale,
                                         ' '.join('%d%% %s' % (position, colour(bgr)) for position, bgr in stops))


def describe(command, host):
    if command.key == KEY_LINE:
        return 'line ' + numbers(command.payload(LineRecord).points)
    if command.key == KEY_BEZI:
        return 'curve ' + numbers(command.payload(BezierRecord).points)
    if command.key == KEY_PLYR:
        polygon = command.payload(PolygonRecord)
        sides = polygon.sides[:host.CountPolygonSides(c_void_p(command.data))]
        return 'polygon %d sides from %s' % (len(sides), numbers([sides[0].x, sides[0].y]))
    if command.key == KEY_FILL:
        return 'fill ' + colour(command.value)
    if command.key in (KEY_FDEF, KEY_PFOL):
        return describe_fill(command.payload(FillDefinition))
    return None


def read_stream(filter_library, host, path):
    """Yields every record; its payload is freed when the next one is asked for."""
    # The filter takes UTF-16 and a full path.
    units = (os.path.abspath(path) + '\0').encode('utf-16-le', 'surrogatepass')
    accepted = filter_library.CheckFile(0, 0, ctypes.create_string_buffer(units))
    while accepted:
        command = filter_library.GetImportCommand()
        yield command
        host.ReleaseImportCommand(ctypes.byref(command))
        if command.key == KEY_ENDF:
            break
    filter_library.CloseFile()
    if not accepted:
        raise ValueError('not imported')


def load(folder):
    host = ctypes.CDLL(os.path.join(folder, 'libsvgimport-host.so.0'))
    host.ReleaseImportCommand.argtypes = [POINTER(ImportCommand)]
    host.ReleaseImportCommand.restype = None
    host.CountPolygonSides.argtypes = [c_void_p]
    host.CountPolygonSides.restype = c_int64
    filter_library = ctypes.CDLL(os.path.join(folder, 'libsvgimport.so.0'))
    filter_library.CheckFile.argtypes = [c_uint64, c_uint64, c_void_p]
    filter_library.CheckFile.restype = c_int
    filter_library.GetImportCommand.argtypes = []
    filter_library.GetImportCommand.restype = ImportCommand
    filter_library.CloseFile.restype = c_int
    return filter_library, host


def main():
    parser = argparse.ArgumentParser(description='Prints the lines, curves, polygons and fills of an imported drawing.')
    parser.add_argument('--libraries', default='', metavar='FOLDER',
                        help='where the libraries are; without it the system finds them')
    parser.add_argument('drawing')
    options = parser.parse_args()
    try:
        filter_library, host = load(options.libraries)
        for command in read_stream(filter_library, host, options.drawing):
            text = describe(command, host)
            if text is not None:
                print(text)
    except (OSError, ValueError) as error:
        print('read_stream.py: %s: %s' % (options.drawing, error), file=sys.stderr)
        return 1
    return 0


if __name__ == '__main__':
    sys.exit(main())
