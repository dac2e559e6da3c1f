#!/usr/bin/env python3
"""Writes worked_values.csv, the values that test_transforms compares with.

An implementation of its own of the formulas of the transforms, in 50 digits and
sharing no line with the program. Only what is single precision by definition (l0
and k0) is rounded; everything else differs from the program by the program's own
rounding errors. Run once, by hand, with python3-mpmath:

    python3 worked_values.py >worked_values.csv
"""

import itertools
import random
import struct
from collections import namedtuple

from mpmath import acos, atan, cos, floor, mp, mpf, nstr, sin, sqrt, tan

mp.dps = 50

BLH2XYZ_DEGREE = mpf("0.017453292519444445")
SERIES_DEGREE = mpf("0.017453292519943")
SHORT_PI = mpf("3.1415926535")
RADIAN = mpf("57.29577951308232")
ARC_SECOND = mpf("4.84813681095679e-06")
WGS84 = (mpf(6378137), mpf("6356752.314245179"))

AXES = {  # ellipsoid code: a, b, f
    0: (6378245.0, 6356863.018773047, 0.00335233),
    1: (6378140.0, 6356755.288157528, 0.003352813),
    2: (6378137.0, 6356752.314245179, 0.003352811),
    3: (6378137.0, 6356752.314140355, 0.003352811),
}

Case = namedtuple(
    "Case",
    "type ellipsoid utm_mode method l0 k0 east north seven four a b f state",
    defaults=(0, 2, 1, 3, 117.0, 1.0, 500000.0, 0.0, (0.0,) * 7, (0.0,) * 4, *AXES[2], 0),
)


def single(value):
    return struct.unpack("f", struct.pack("f", float(value)))[0]


def cut(value):
    """Truncation towards zero."""
    return int(value)


# Gauss and UTM, forward. East and north come times ten, l0 times 10000.


def ellipse(f):
    e2 = (2 - mpf(f)) * mpf(f)
    return e2, e2 / (1 - e2)


def arc_from_equator(phi, a, e2):
    terms = (
        1 - e2 / 4 - 3 * e2**2 / 64 - 5 * e2**3 / 256,
        3 * e2 / 8 + 3 * e2**2 / 32 + 45 * e2**3 / 1024,
        15 * e2**2 / 256 + 45 * e2**3 / 1024,
        35 * e2**3 / 3072,
    )
    return mpf(a) * (
        terms[0] * phi - terms[1] * sin(2 * phi) + terms[2] * sin(4 * phi) - terms[3] * sin(6 * phi)
    )


def project(phi, lam, a, f, k, fifth):
    """Northing and easting from equator and meridian; lam without cos(phi)."""
    e2, ep2 = ellipse(f)
    T, C, A = tan(phi) ** 2, ep2 * cos(phi) ** 2, cos(phi) * lam
    N = mpf(a) / sqrt(1 - e2 * sin(phi) ** 2)
    up = (
        arc_from_equator(phi, a, e2)
        + tan(phi) * N * (A**2 / 2 + (5 - T + 9 * C + 4 * C**2) * A**4 / 24)
        + (61 - 58 * T + T**2 + 270 * C - 330 * T * C) * A**6 / 720  # no tan(phi) N here
    )
    right = (A + (1 - T + C) * A**3 / 6 + fifth(T, C, ep2) * A**5 / 120) * N
    return up * k, right * k


def gauss_forward(case, b, l, h):
    k = mpf(single(case.k0)) or mpf(1)
    l0 = single(single(case.l0) / 10000.0)
    fn = mpf(case.north) / 10
    fe = ((mpf(case.east) - 5000000) / 10 if case.east != 0 else 0) + 500000
    if case.method == 6:
        zone = cut(mpf(l0) / 6 + 1)
        meridian = 6 * zone - 3
    else:
        zone = 120 if l0 < 1.5 else cut((mpf(l0) - mpf("1.5")) / 3 + 1)
        meridian = 3 * zone
    if not l > 0:
        l = l + 360
    up, right = project(
        b * SERIES_DEGREE,
        (l - meridian) * SERIES_DEGREE,
        case.a,
        case.f,
        k,
        lambda T, C, ep2: 5 - 18 * T + T**2 + 14 * C - 58 * T * C,
    )
    if case.method == 6 and zone > 60:
        zone -= 60
    return up + fn, zone * 1000000 + right + fe, h


def utm_forward(case, b, l, h, hemisphere):
    k = mpf(single(case.k0 or 0.9996))
    zone = int(floor((mpf(l) + 180) / 6)) + 1
    phi = b * SERIES_DEGREE
    up, right = project(
        phi if hemisphere == 1 else -phi,
        (l - (6 * zone - 183)) * SERIES_DEGREE,
        case.a,
        case.f,
        k,
        lambda T, C, ep2: 5 - 18 * T + T**2 + 72 * C - 58 * ep2**2,
    )
    north = mpf(case.north)
    x = (north - 100000000) / 10 + up if hemisphere == 1 else north / 10 - up
    return x, mpf(case.east) / 10 + right + zone * 1000000, h


# Gauss and UTM, back, with the values as they are.


def footpoint(arc, k, a, f):
    e2, ep2 = ellipse(f)
    e1 = mpf(f) / (2 - mpf(f))
    mu = arc / k / ((1 - e2 / 4 - 3 * e2**2 / 64 - 5 * e2**3 / 256) * mpf(a))
    phi = (
        mu
        + (3 * e1 / 2 - 27 * e1**3 / 32) * sin(2 * mu)
        + (21 * e1**2 / 16 - 55 * e1**4 / 32) * sin(4 * mu)
        + 151 * e1**3 / 96 * sin(6 * mu)
        + 1097 * e1**4 / 512 * sin(8 * mu)
    )
    W = 1 - e2 * sin(phi) ** 2
    return phi, tan(phi) ** 2, ep2 * cos(phi) ** 2, ep2, mpf(a) / sqrt(W), (1 - e2) * mpf(a) / sqrt(W**3)


def gauss_back(case, x, y, h):
    zone = cut(abs(mpf(y))) // 1000000
    meridian = 6 * zone - 3 if case.method == 6 else 3 * zone
    k = mpf(single(case.k0)) or mpf(1)
    phi, T, C, _, N, R = footpoint(mpf(x) - mpf(case.north), k, case.a, case.f)
    D = (mpf(y) - mpf(case.east) - zone * 1000000) / (N * k)
    b = phi - tan(phi) * N / R * (
        D**2 / 2
        - (5 + 3 * T + C - 9 * T * C) * D**4 / 24
        + (61 + 90 * T + 45 * T**2) * D**6 / 720
    )
    l = (
        D
        - (1 + 2 * T + C) * D**3 / 6
        + (5 + 28 * T + 24 * T**2 + 6 * C + 8 * T * C) * D**5 / 120
    ) / cos(phi) + meridian * SERIES_DEGREE
    l *= RADIAN
    while l < -180:
        l += 360
    while l > 180:
        l -= 360
    return b * RADIAN, l, h


def utm_back(case, x, y, h):
    zone = cut(mpf(y) / 1000000) & 0xFF
    k = mpf(single(case.k0 or 0.9996))
    metres = cut(x)
    sign = -1 if metres < 0 else 1
    arc = sign * (abs(metres) % 10000000)
    if (sign * (abs(metres) // 10000000)) & 0xFF:
        arc -= 10000000
    phi, T, C, ep2, N, R = footpoint(mpf(arc), k, case.a, case.f)
    D = (mpf(y) - (zone * 1000000 + 500000)) / (k * N)
    b = phi - tan(phi) * N / R * (
        D**2 / 2
        - (5 + 3 * T + 10 * C - 4 * C**2 - 9 * ep2) * D**4 / 24
        + (61 + 90 * T + 298 * C + 45 * T**2 - 252 * ep2 - 3 * C**2) * D**6 / 720
    )
    l = (
        D
        - (1 + 2 * T + C) * D**3 / 6
        + (5 - 2 * C + 28 * T - 3 * C**2 + 8 * ep2 + 24 * T**2) * D**5 / 120
    ) / cos(phi) + (6 * zone - 183) * SERIES_DEGREE
    return abs(b * RADIAN), abs(l * RADIAN), h


# Cartesian coordinates and the change of datum.


def to_cartesian(b, l, h, a, axis_b):
    a, axis_b = mpf(a), mpf(axis_b)
    e2 = (a * a - axis_b * axis_b) / (a * a)
    B, L = b * BLH2XYZ_DEGREE, l * BLH2XYZ_DEGREE
    N = a / sqrt(1 - e2 * sin(B) ** 2)
    return (N + h) * cos(B) * cos(L), (N + h) * cos(B) * sin(L), ((1 - e2) * N + h) * sin(B)


def to_geodetic(x, y, z, a, axis_b, sign):
    a, axis_b = mpf(a), mpf(axis_b)
    e2 = (a * a - axis_b * axis_b) / (a * a)
    ep2 = (a * a - axis_b * axis_b) / (axis_b * axis_b)
    c = a * a / axis_b
    P = sqrt(mpf(x) ** 2 + mpf(y) ** 2)
    L = sign * acos(x / P)
    B, remembered = atan(z / P), mpf(0)
    while True:
        B0 = B
        B = atan((z + e2 * c / sqrt(1 + ep2 * cos(B0) ** 2) * sin(B0)) / P)
        if B > B0:
            remembered = B - B0
        if remembered < mpf("1e-10"):
            break
    H = z / sin(B) - (1 - e2) * c / sqrt(1 + ep2 * cos(B) ** 2) if z != 0 else mpf(0)
    return B * 180 / SHORT_PI, L * 180 / SHORT_PI, H


def seven_forward(seven, x, y, z):
    dx, dy, dz, rx, ry, rz, k = (mpf(v) for v in seven)
    rx, ry, rz = rx * ARC_SECOND, ry * ARC_SECOND, rz * ARC_SECOND
    return (
        dx + (1 + k) * x + rz * y - ry * z,
        dy + (1 + k) * y + rx * z - rz * x,
        dz + (1 + k) * z + ry * x - rx * y,
    )


def seven_back(seven, x, y, z):
    dx, dy, dz, rx, ry, rz, k = (mpf(v) for v in seven)
    u, w, t = rx * SERIES_DEGREE, ry * SERIES_DEGREE, rz * SERIES_DEGREE  # for degrees
    x, y, z = (x - dx) / (1 + k), (y - dy) / (1 + k), (z - dz) / (1 + k)
    G = 1 + t**2
    D = 1 / (1 + u**2 + w**2 + t**2 + 2 * w**2 * t**2)
    p, q, m, n = u**2 * t, w**2 * t, w * u, w * u * t**2
    return (
        x * ((p * t - w**2) * D + 1) / G + y * ((p + q + m + n) * D - t) / G + z * (t * u + w) * D,
        x * ((m + n - p - q) * D + t) / G + y * ((q * t - u**2) * D + 1) / G + z * (t * w - u) * D,
        x * (t * u - w) * D + y * (t * w + u) * D + z * G * D,
    )


# The step in the plane.


def four_forward(four, x, y, h, skip):
    dx, dy, rt, k = (mpf(v) for v in four)
    if skip:
        return x, y, h
    zone = cut(y / 1000000) if y > 1000000 else 0
    y = y - zone * 1000000
    angle = (rt + 648000 if rt > 0 else -rt) / 3600 * SHORT_PI / 180
    if k != 0:
        x, y = (x * cos(angle) - y * sin(angle)) * k + dx, (x * sin(angle) + y * cos(angle)) * k + dy
    if zone > 0:
        y = zone * 1000000 + abs(y)
    return x, y, h


def four_back(four, x, y, h):
    dx, dy, rt, k = (mpf(v) for v in four)
    x, y = mpf(x), mpf(y)
    zone = cut(y / 1000000) & 0xFF
    y -= zone * 1000000
    s = 1 + k
    if rt == 0:
        x, y = (x - dx) / s, (y - dy) / s
    else:
        y = (y - dy - rt * (x - dx)) / (s * (1 + rt**2))
        x = (x - dx + y * rt * s) / s
    return x, y + zone * 1000000, h


# The two roads.


def there(case, b, l, h):
    scaled = case._replace(
        east=mpf(case.east) * 10,
        north=mpf(case.north) * 10,
        l0=single(single(case.l0) * 10000.0),
    )
    hemisphere = 2 if b < 0 else 1
    place = (mpf(b), mpf(l), mpf(h) * 10)
    if case.ellipsoid != 2:
        shifted = seven_forward(case.seven, *to_cartesian(*place, *WGS84))
        place = to_geodetic(*shifted, case.a, case.b, -1 if l < 0 else 1)
    if case.utm_mode == 1:
        plane = gauss_forward(scaled, *place)
    else:
        plane = utm_forward(scaled, *place, hemisphere)
    return four_forward(case.four, *plane, case.type)


def back_again(case, x, y, h):
    plane = four_back(case.four, x, y, h)
    place = (gauss_back if case.utm_mode == 1 else utm_back)(case, *plane)
    if case.ellipsoid != 2:
        cartesian = to_cartesian(*place, case.a, case.b)
        place = to_geodetic(*seven_back(case.seven, *cartesian), *WGS84, -1 if place[1] < 0 else 1)
    return place


# The cases.

CITY = (-12.5, 113.25, -38.75, 1.25, -0.75, 2.5, 1.5e-06)
POINTS = [
    (30.123456789, 117.987654321, 15.5),
    (45.75, 115.6, -3.25),
    (-33.8688, 116.25, 58.0),
    (0.000123, 117.5, 0.0),
]


def dispatch_cases():
    """Every combination of what a form offers, in turn on four points."""
    turn = itertools.cycle(POINTS)
    for code, mode, method, kind, four in itertools.product(
        AXES, (1, 2), (3, 6), (0, 1, 2), ((0.0,) * 4, (21.5, -13.25, -40.0, 1.00002))
    ):
        yield Case(
            type=kind,
            ellipsoid=code,
            utm_mode=mode,
            method=method,
            l0=117.0,
            k0=1.0 if mode == 1 else 0.9996,
            north=0.0 if mode == 1 else 10000000.0,
            seven=CITY if kind == 1 else (0.0,) * 7,
            four=four,
            **dict(zip("abf", AXES[code])),
        ), next(turn)
    usual = (30.123456789, 117.987654321, 15.5)
    west = (-33.45, -70.65, 520.0)
    for case, point in [
        (Case(l0=0.0), usual),  # zone 120, whose meridian is 360
        (Case(l0=1.25), usual),
        (Case(l0=1.5), usual),
        (Case(l0=116.4), usual),  # moved to 117
        (Case(l0=115.6), usual),  # still 117
        (Case(l0=115.5), usual),
        (Case(l0=117.3, method=6), usual),
        (Case(l0=289.0), west),  # western longitudes count from 0 to 360
        (Case(l0=291.0, method=6), west),  # zone 49: no prefix is taken off
        (Case(l0=363.0, method=6), usual),  # zone 61 is written as 1
        (Case(l0=-3.0, method=6), usual),
        (Case(l0=357.0), (51.5, 0.0, 10.0)),  # a longitude of 0 counts as 360
        (Case(east=0.0), usual),  # means 500000
        (Case(east=123456.75, north=-2000000.5), usual),
        (Case(k0=0.0), usual),
        (Case(k0=1.0003), usual),
        (Case(k0=0.0, utm_mode=2, north=10000000.0), usual),
        (Case(utm_mode=2, north=10000000.0), west),
        (Case(utm_mode=2, north=0.0), usual),
        (Case(utm_mode=2, north=10000000.0, east=0.0), (59.9, 179.99, 1.0)),
        (Case(utm_mode=2, north=10000000.0, l0=3.0), (-0.5, -180.0, 1.0)),
        (Case(method=0), usual),  # whatever is not 6 is 3
        (Case(four=(5.0, 6.0, 10.0, 0.0)), usual),  # a k of 0: no shift
        (Case(four=(0.0, 0.0, 0.0, 1.0)), usual),
        (Case(four=(100.0, -50.0, 30.0, 1.0001)), usual),  # half a turn more
        (Case(four=(100.0, -50.0, -30.0, 1.0001)), usual),
        (Case(four=(0.0, -900000.0, 0.0, 1.0)), usual),  # y below 0: the sign is lost
        (Case(ellipsoid=2, seven=CITY, **dict(zip("abf", AXES[0]))), usual),  # not shifted
        (Case(ellipsoid=1, type=0, seven=CITY, **dict(zip("abf", AXES[1]))), usual),  # shifted
        (Case(ellipsoid=0, seven=CITY, l0=291.0, **dict(zip("abf", AXES[0]))), west),
        (Case(ellipsoid=3, seven=(500.0, -300.0, 200.0, 90.0, 60.0, -30.0, 0.001),
              **dict(zip("abf", AXES[3]))), (64.0, 118.0, 1000.0)),
    ]:
        yield case, point


def dispatch_rows():
    for case, point in dispatch_cases():
        yield "wgs84_to_plane", case, point, there(case, *point)
    for case, _ in dispatch_cases():
        # A plane point of the system's own kind; its four parameters are small here.
        case = case._replace(four=(case.four[0], case.four[1], case.four[2] * 1e-7, case.four[3] / 1e4))
        if case.utm_mode == 1:
            zone = 20 if case.method == 6 else 39
            point = (3334000.125, zone * 1000000 + 595123.0625, 12.5)
        else:
            point = (3334567.875, 50587654.3125, 12.5)
        yield "plane_to_wgs84", case, point, back_again(case, *point)


def single_rows():
    random.seed(1)
    for code in AXES:
        a, b, f = AXES[code]
        for lat, lon, h in POINTS + [
            (-12.0, -77.0, 150.0), (60.0, -1.0, 0.0), (89.9, 10.0, 5.0), (-89.9, -10.0, 5.0),
        ]:
            case = Case(ellipsoid=code, a=a, b=b, f=f)
            yield "BLH2XYZ", case, (lat, lon, h), to_cartesian(mpf(lat), mpf(lon), mpf(h), a, b)
        for x, y, z in [
            (-2595420.5, 4875112.25, 3182002.75), (-2595420.5, 4875112.25, -3182002.75),
            (1102450.0, -4772190.0, -4068541.0), (6378137.0, 15000.0, 0.0), (-6000000.0, 2000000.0, 1.0),
            (100.0, 200.0, 6356800.0), (100.0, 200.0, -6356800.0), (26000000.0, 1000000.0, 3000000.0),
        ]:
            for sign in (1, -1):
                case = Case(ellipsoid=code, a=a, b=b, f=f, state=sign)
                yield "XYZ2BLH", case, (x, y, z), to_geodetic(x, y, z, a, b, sign)
        for lat, lon, h in POINTS + [(-33.45, -70.65, 520.0), (84.0, 120.0, 0.0)]:
            for method, l0, k0, east, north in [
                (3, 1170000.0, 1.0, 5000000.0, 0.0), (6, 1170000.0, 0.0, 0.0, 0.0),
                (3, 1140000.0, 0.9999, 4000000.0, -50000000.0), (6, 2910000.0, 1.0, 5000000.0, 0.0),
            ]:
                case = Case(ellipsoid=code, method=method, l0=l0, k0=k0, east=east, north=north,
                            a=a, b=b, f=f)
                yield "BL2XY", case, (lat, lon, h), gauss_forward(case, mpf(lat), mpf(lon), h)
                hemisphere = 2 if lat < 0 else 1
                case = case._replace(utm_mode=2, state=hemisphere)
                yield "UTMBL2XY", case, (lat, lon, h), utm_forward(case, mpf(lat), mpf(lon), h, hemisphere)
        for x, y in [
            (3334000.125, 39595123.0625), (3334000.125, 39404876.5), (-3748012.75, 39512345.5),
            (6251987.25, 50587654.0), (12.5, 120500000.0), (10000123.9, 31500001.0), (123.0, 595123.0),
            (123.99, 595123.0), (9999999.5, 60166021.0), (3334000.0, 80499000.0), (3334000.0, 300595123.0),
            (-3334000.75, 50500000.0), (20003334.0, 1500000.0), (2560001234.5, 50500000.0),
        ]:
            for method, k0, east, north in [(3, 1.0, 500000.0, 0.0), (6, 0.0, 500000.0, 0.0),
                                            (3, 0.9996, 0.0, 10000000.0)]:
                case = Case(ellipsoid=code, method=method, k0=k0, east=east, north=north, a=a, b=b, f=f)
                if abs(x - north) < 9.5e6:  # nearer the pole there is nothing to compare
                    yield "XY2BL", case, (x, y, 1.5), gauss_back(case, x, y, 1.5)
                if (y < 7e7 or y > 2.5e8) and x != 9999999.5:
                    case = case._replace(utm_mode=2)
                    yield "UTMXY2BL", case, (x, y, 1.5), utm_back(case, x, y, 1.5)
    for _ in range(12):
        seven = tuple(random.uniform(-200, 200) for _ in range(3)) + tuple(
            random.uniform(-60, 60) for _ in range(3)) + (random.uniform(-1e-4, 1e-4),)
        point = tuple(random.uniform(-6e6, 6e6) for _ in range(3))
        case = Case(seven=seven)
        exact = tuple(mpf(v) for v in point)
        yield "By7Param", case, point, seven_forward(seven, *exact)
        yield "By7ParamInverse", case, point, seven_back(seven, *exact)
    fours = [
        (0.0, 0.0, 0.0, 0.0), (12.5, -7.25, 0.0, 0.0), (12.5, -7.25, 0.0, 1.0), (12.5, -7.25, 3600.0, 1.0),
        (12.5, -7.25, -3600.0, 1.0), (12.5, -7.25, -162000.0, 0.5), (0.0, -2000000.0, 0.0, 1.0),
        (12.5, -7.25, 1e-5, 2e-6), (12.5, -7.25, 0.25, -0.5),
    ]
    for four in fours:
        for point in [(3334000.125, 39595123.0625, 7.0), (3334000.125, 595123.0, 7.0), (10.0, -20.0, 7.0),
                      (10.0, 1000000.0, 7.0), (10.0, 1000000.25, 7.0), (10.0, -3595123.0, 7.0),
                      (10.0, 259500000.0, 7.0)]:
            exact = tuple(mpf(v) for v in point)
            for skip in (0, 1):
                case = Case(four=four, state=skip)
                yield "By4Param", case, point, four_forward(four, *exact, skip)
            yield "By4ParamInverse", Case(four=four), point, four_back(four, *exact)


def main():
    print(
        "routine,type,ellipsoid,utm_mode,method,l0,k0,east,north,dx7,dy7,dz7,rx,ry,rz,k7,"
        "dx4,dy4,rt,k4,a,b,f,state,in1,in2,in3,out1,out2,out3"
    )
    for routine, case, given, result in itertools.chain(dispatch_rows(), single_rows()):
        flat = [routine, *case[:8], *case.seven, *case.four, case.a, case.b, case.f, case.state, *given]
        print(",".join([*(str(v) for v in flat), *(nstr(mpf(v), 20) for v in result)]))


if __name__ == "__main__":
    main()
