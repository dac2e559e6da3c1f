#!/usr/bin/env python3
"""Makes the CSV files beside it, independently of the program.

The data are those of tests/support/sample_records.cpp; the rules are written
down a second time here, the projection too (Gauss, three-degree zone 35, on
WGS 84). Run it only when the format is meant to change, and look at the
difference.
"""
from math import cos, sin, sqrt, tan
from pathlib import Path

SAMPLES = [
    ("面积", "North field, 2", [
        ("104.020575123456", "30.611316987654", "512.30"),
        ("104.021575000001", "30.611416000002", "512.40"),
        ("104.021675999999", "30.612416500000", "513.05"),
        ("104.020475250000", "30.612316750000", "511.95")]),
    ("距离", 'He said "far"', [
        ("104.000000000000", "30.000000000000", "500.00"),
        ("104.500000000000", "30.250000000000", "501.50"),
        ("104.999999999999", "30.999999999999", "502.00")]),
    ("航点", "<well> & gate", [("113.264385000000", "23.129112000000", "21.00")]),
    ("航线", "a]]>b", [
        ("126.650000000000", "45.750000000000", "120.50"),
        ("126.650500000000", "45.751000000000", "121.00")]),
    ("航迹", "  two blanks  ", [
        ("2.294481000000", "48.858370000000", "35.00"),
        ("2.295481000000", "48.859370000000", "36.00"),
        ("2.296481000000", "48.860370000000", "37.00")]),
    ("放样", "东边的地块", [
        ("151.209300000000", "-33.868800000000", "58.00"),
        ("151.210300000000", "-33.869800000000", "57.00")]),
    ("自制", "🌾🚜", [
        ("-122.419416000000", "37.774929000000", "16.00"),
        ("-122.420416000000", "37.775929000000", "17.00")]),
    ("面积", "", [
        ("116.391300000000", "39.907500000000", "43.50"),
        ("116.392300000000", "39.907500000000", "43.60"),
        ("116.391800000000", "39.908500000000", "43.70")]),
    ("航点", "O'Brien's 'tree'", [("-70.669300000000", "-33.448900000000", "-3.00")]),
    ("距离", "nothing measured", []),
]

RECORD_HEADER = {
    "zh": "序号,名字,时间,数据条数,方式,坡度,平方米/亩,面积(平方米),面积(亩),行程(米),单价,总价\n",
    "en": "NO., Name, Time, Number of data entries,Measurement Mode, Slope, Area(Ratio), "
          "Area(Square Meters),Area (Mu), Distance(Meters), Unit Price, Total Price\n",
}
POINT_HEADER = {
    ("zh", False): "经度,纬度,海拔\n", ("zh", True): "X,Y,海拔\n",
    ("en", False): "Longitude,Latitude,Altitude\n", ("en", True): "X,Y,Altitude\n",
}
PLANE = (1, 4)


def gauss(latitude, longitude):
    """Northing and easting with the zone's number, metres."""
    a, f, zone = 6378137.0, 0.003352811, 35
    radians = 0.017453292519943
    e2 = (2 - f) * f
    ep2 = e2 / (1 - e2)
    phi = latitude * radians
    # West of Greenwich a longitude counts on from 180.
    away = (longitude if longitude > 0 else longitude + 360.0) * radians - 3.0 * zone * radians
    t = tan(phi) ** 2
    c = ep2 * cos(phi) * cos(phi)
    big_a = cos(phi) * away
    n = a / sqrt(1 - e2 * sin(phi) * sin(phi))
    y = ((5 - 18 * t + t * t + 14 * c - 58 * t * c) * big_a ** 5 / 120
         + (1 - t + c) * big_a ** 3 / 6 + big_a) * n
    arc = a * ((1 - e2 / 4 - 3 * e2 ** 2 / 64 - 5 * e2 ** 3 / 256) * phi
               - (3 * e2 / 8 + 3 * e2 ** 2 / 32 + 45 * e2 ** 3 / 1024) * sin(2 * phi)
               + (15 * e2 ** 2 / 256 + 45 * e2 ** 3 / 1024) * sin(4 * phi)
               - 35 * e2 ** 3 / 3072 * sin(6 * phi))
    x = (arc + tan(phi) * n * ((5 - t + 9 * c + 4 * c * c) * big_a ** 4 / 24 + big_a * big_a / 2)
         + (61 - 58 * t + t * t + 270 * c - 330 * t * c) * big_a ** 6 / 720)
    return x, zone * 1000000 + (y + 500000.0)


def whole_degrees(value, width):
    return ("-" if value < 0 else "") + str(int(abs(value))).rjust(width, "0")


def minutes(value, width):
    rest = (abs(value) - int(abs(value))) * 60
    return f"{whole_degrees(value, width)}°{rest:07.4f}′"


def seconds(value, width):
    rest = (abs(value) - int(abs(value))) * 60
    whole_minutes = int(rest)
    rest = (rest - whole_minutes) * 60
    fraction = rest - int(rest)
    tail = f"{fraction:.2f}"[1:] if fraction > 0 else ""
    return f"{whole_degrees(value, width)}°{whole_minutes:02}′{int(rest):02}{tail}″"


def point_line(point, mode):
    longitude, latitude = float(point[0]), float(point[1])
    if mode in PLANE:
        x, y = gauss(latitude, longitude)
        pair = (f"{x:.12f}", f"{y:.12f}")
        pair = pair if mode == 1 else pair[::-1]
    elif mode == 2:
        pair = (minutes(longitude, 3), minutes(latitude, 2))
    elif mode == 3:
        pair = (seconds(longitude, 3), seconds(latitude, 2))
    else:
        pair = point[:2]
    return ",".join((*pair, point[2])) + "\n"


def block(number, language, mode, single):
    method, name, points = SAMPLES[number]
    value = [f"{10 + number}.{field:02}" for field in range(9)]
    slope, distance, areamu, areameter, total = (value[i] for i in (1, 3, 4, 5, 6))
    currency = str(1 + number % 5)
    ratio = areamu if single and mode in PLANE else "667"
    cells = [name, f"2024-03-{10 + number} 07:08:09", str(len(points)), method, slope, ratio,
             areameter, areamu, distance, currency, total]
    if not single:
        cells.insert(0, str(number))
    shown = points[:-1] if single and mode != 0 else points
    return (RECORD_HEADER[language] + ",".join(cells) + "\n" + POINT_HEADER[language, mode in PLANE]
            + "".join(point_line(point, mode) for point in shown))


for language in ("zh", "en"):
    for mode in range(5):
        for form in ("merged", "single"):
            # A file for each record: here one behind the other.
            text = "".join(block(number, language, mode, form == "single")
                           for number in range(len(SAMPLES)))
            path = Path(__file__).parent / f"{form}_{language}_mode{mode}.csv"
            path.write_bytes(text.encode())
