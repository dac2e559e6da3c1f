#!/usr/bin/env python3
"""Makes the KML and GPX files beside it, independently of the program.

The data are those of make_csv.py, which this makes run as well; the rules of the
two formats are written down a second time here. Run it only when a format is
meant to change, and look at the difference.
"""
from pathlib import Path
from xml.sax.saxutils import escape

from make_csv import SAMPLES

HERE = Path(__file__).parent


def text(value):
    """Characters as the writer escapes them: quotes too, apostrophes not."""
    return escape(value, {'"': "&quot;"})


def values(number):
    """The values that both formats carry, in their order."""
    method, name, points = SAMPLES[number]
    value = [f"{10 + number}.{field:02}" for field in range(9)]
    slope, distance, areamu, areameter, total = (value[i] for i in (1, 3, 4, 5, 6))
    currency = str(1 + number % 5)
    return [f"2024-03-{10 + number} 07:08:09", method, slope, "667", currency, distance,
            areameter, areamu, total, str(len(points)), str(301 + number), name]


def kml():
    labels = ["时间:", "测量方式:", "坡度（度数）:", "亩值（平方米）:", "单价（元）：", "行程（米）：",
              "面积（平方米）：", "面积（亩）：", "总价（元）：", "点数：", "数据条数：", "名字："]
    shapes = {"航点": ["Point"], "航线": ["LineString"], "距离": ["LineString"],
              "航迹": ["LineString"], "面积": ["Polygon", "outerBoundaryIs", "LinearRing"]}
    out = ['<?xml version="1.0" encoding="UTF-8"?>\n'
           '<kml xmlns="http://www.opengis.net/kml/2.2">\n'
           '    <Document>\n']
    for number, (method, name, points) in enumerate(SAMPLES):
        items = ("\n" + " " * 32).join(
            f"<h4>{label}{value}</h4>" for label, value in zip(labels, values(number))) + "\n"
        out.append("        <Placemark>\n"
                   f"            <name>{text(name)}</name>\n"
                   "            <visibility>1</visibility>\n"
                   "            <description><![CDATA["
                   + items.replace("]]>", "]]]]><![CDATA[>") + "]]></description>\n")
        around = shapes.get(method, [])
        for depth, element in enumerate(around):
            out.append(" " * (12 + 4 * depth) + f"<{element}>\n")
        if around:
            lines = "".join(",".join(point) + "\n" for point in points)
            out.append(" " * (12 + 4 * len(around)) + f"<coordinates>\n{lines}</coordinates>\n")
        for depth, element in reversed(list(enumerate(around))):
            out.append(" " * (12 + 4 * depth) + f"</{element}>\n")
        out.append("        </Placemark>\n")
    return "".join(out) + "    </Document>\n</kml>\n"


def gpx(numbers):
    space = "http://www.topografix.com/GPX/1/1"
    out = ['<?xml version="1.0" encoding="UTF-8"?>\n'
           f'<gpx version="1.1" creator="Velmo" xmlns="{space}"'
           ' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"'
           f' xsi:schemaLocation="{space} {space}/gpx.xsd">\n'
           "    <metadata>\n"
           "        <name>Sample GPX File</name>\n"
           "        <author>Marlund</author>\n"
           "    </metadata>\n"]
    names = ["time", "measurementMethod", "slopeDegrees", "muValue", "unitPrice", "distance",
             "areaSquareMeters", "areaMu", "totalPrice", "pointCount", "dataCount", "name"]

    def element(depth, name, value):
        return " " * depth + f"<{name}>{text(value)}</{name}>\n"

    def head(number):
        return (element(8, "name", SAMPLES[number][1]) + "        <desc>\n"
                + "".join(element(12, *pair) for pair in zip(names, values(number)))
                + "        </desc>\n")

    def points(number, depth, name):
        return "".join(
            " " * depth + f'<{name} lat="{lat}" lon="{lon}">\n' + element(depth + 4, "ele", ele)
            + " " * depth + f"</{name}>\n" for lon, lat, ele in SAMPLES[number][2])

    for number in numbers:
        method = SAMPLES[number][0]
        if method == "航点":
            (lon, lat, ele), = SAMPLES[number][2]
            out.append(f'    <wpt lat="{lat}" lon="{lon}">\n' + element(8, "ele", ele)
                       + head(number) + "    </wpt>\n")
        elif method in ("航线", "距离"):
            out.append("    <rte>\n" + head(number) + points(number, 8, "rtept") + "    </rte>\n")
        elif method in ("面积", "航迹"):
            inner = points(number, 12, "trkpt")
            segment = f"        <trkseg>\n{inner}        </trkseg>\n" if inner else "        <trkseg/>\n"
            out.append("    <trk>\n" + head(number) + segment + "    </trk>\n")
    return "".join(out) + "</gpx>\n"


(HERE / "all.kml").write_bytes(kml().encode())
(HERE / "merged.gpx").write_bytes(gpx(range(len(SAMPLES))).encode())
for number in range(len(SAMPLES)):
    (HERE / f"single_{number + 1}.gpx").write_bytes(gpx([number]).encode())
