"""Recombination frequency of two markers in a backcross. usage: twopoint.py PATH/libtessarmont.so"""
from ctypes import CDLL, byref, c_float, c_int32
from sys import argv

library = CDLL(argv[1])
counts = (c_float * 9)(42, 9, 0, 11, 38)
rec, error, lod, p, haldane, kosambi = results = [c_float() for _ in range(6)]
library.TOOLTWOPOINTREC(byref(c_int32(1)), byref(c_int32(11)), counts, *map(byref, results))
print(f"r = {rec.value:.4f} +- {error.value:.4f}, LOD {lod.value:.2f}, {kosambi.value:.2f} cM (Kosambi)")
