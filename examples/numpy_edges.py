#!/usr/bin/python3
"""Edges of a picture from Python: the 64-bit library called through ctypes on NumPy arrays.

The steps are those of examples/edges.cpp: gray, Sobel derivatives, thresholds from the magnitudes, Canny's detector.

usage: numpy_edges.py LIBRARIES PICTURE RESULT [EXPECTED]

LIBRARIES is the folder of the 64-bit libraries: a build's, or lib/x86_64-linux-gnu below a prefix. The edge map goes to
RESULT as a PNG. With EXPECTED, an edge map of the same picture by examples/edges, the two are compared byte for byte.
Needs Debian's python3-numpy and python3-pil.
"""
import ctypes
import pathlib
import sys

import numpy as np
from PIL import Image

# Constants of noxtypes.h.
MASK_3X3 = 33
BORDER_REPLICATE = 1


class Size(ctypes.Structure):
    """NoxiSize."""
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int)]


class Library:
    """Calls functions of the library, and raises an exception for a status that is an error."""

    def __init__(self, folder):
        # The image library takes the core library from what is loaded already.
        ctypes.CDLL(str(folder / "libnoxcore.so.5.2"), mode=ctypes.RTLD_GLOBAL)
        self.library = ctypes.CDLL(str(folder / "libnoxcva6.so.5.2"))

    def __call__(self, name, *arguments):
        status = getattr(self.library, name)(*arguments)
        if status < 0:
            raise RuntimeError(f"{name} returned {status}")

    def buffer(self, query, *arguments):
        """Work memory of the size that a query tells."""
        size = ctypes.c_int()
        self(query, *arguments, ctypes.byref(size))
        return np.empty(size.value, np.uint8)


def region(image):
    """An array as two arguments: the address of its first pixel, and the bytes from row to row."""
    if image.strides[1] != image.itemsize:
        raise ValueError("the pixels of a row must lie side by side")
    return ctypes.c_void_p(image.ctypes.data), image.strides[0]


def edges(library, gray):
    size = Size(gray.shape[1], gray.shape[0])
    dx, dy = np.empty(gray.shape, np.int16), np.empty(gray.shape, np.int16)
    for name, derivative in (("SobelNegVert", dx), ("SobelHoriz", dy)):
        buffer = library.buffer(f"noxiFilter{name}GetBufferSize_8u16s_C1R", size, MASK_3X3)
        library(f"noxiFilter{name}Border_8u16s_C1R", *region(gray), *region(derivative), size, MASK_3X3,
                BORDER_REPLICATE, ctypes.c_ubyte(0), ctypes.c_void_p(buffer.ctypes.data))
    # The magnitude that nine of ten pixels stay below.
    magnitudes = np.abs(dx.astype(np.int32)) + np.abs(dy.astype(np.int32))
    high = max(int(np.partition(magnitudes.ravel(), magnitudes.size * 9 // 10)[magnitudes.size * 9 // 10]), 1)
    low = np.float32(0.4) * np.float32(high)
    result = np.empty(gray.shape, np.uint8)
    buffer = library.buffer("noxiCannyGetSize", size)
    library("noxiCanny_16s8u_C1R", *region(dx), *region(dy), *region(result), size, ctypes.c_float(low),
            ctypes.c_float(high), ctypes.c_void_p(buffer.ctypes.data))
    return result


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    library = Library(pathlib.Path(sys.argv[1]).resolve())
    color = np.asarray(Image.open(sys.argv[2]).convert("RGB")).astype(np.int32)
    gray = ((color @ np.array([299, 587, 114]) + 500) // 1000).astype(np.uint8)
    result = edges(library, gray)
    Image.fromarray(result).save(sys.argv[3])
    print(f"{sys.argv[2]}: {gray.shape[1]} x {gray.shape[0]}, {np.count_nonzero(result)} edge pixels")
    if len(sys.argv) == 5:
        expected = np.asarray(Image.open(sys.argv[4]))
        if expected.tobytes() != result.tobytes():
            sys.exit(f"{sys.argv[4]} differs")
        print(f"  the same bytes as {sys.argv[4]}")


main()
