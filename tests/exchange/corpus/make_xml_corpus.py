#!/usr/bin/env python3
"""Makes the KML and GPX files in kml/ and gpx/.

Written for these tests after the published formats and the habits of common
programs; nothing is taken from a file of somebody else. What the reader makes of
each stands in test_corpus.cpp; the fuzzers start from them.
"""
import random
from pathlib import Path

HERE = Path(__file__).parent
KML = "http://www.opengis.net/kml/2.2"
HEAD = '<?xml version="1.0" encoding="UTF-8"?>\n'


def kml(name, content):
    data = content if isinstance(content, bytes) else content.encode()
    (HERE / "kml" / name).write_bytes(data)


def gpx(name, content):
    data = content if isinstance(content, bytes) else content.encode()
    (HERE / "gpx" / name).write_bytes(data)


def document(inside, attributes=f'xmlns="{KML}"'):
    return f"{HEAD}<kml {attributes}>\n<Document>\n{inside}\n</Document>\n</kml>\n"


def placemark(geometry, name="Foreign", description="made elsewhere"):
    return (f"<Placemark>\n<name>{name}</name>\n<description>{description}</description>\n"
            f"{geometry}\n</Placemark>")


def line(tuples, element="LineString"):
    return f"<{element}><tessellate>1</tessellate><coordinates>{tuples}</coordinates></{element}>"


ITEMS = [("时间:", "2024-03-05 07:08:09"), ("测量方式:", "航线"), ("坡度（度数）:", "1.5"),
         ("亩值（平方米）:", "667"), ("单价（元）：", "1"), ("行程（米）：", "30.5"),
         ("面积（平方米）：", "20.5"), ("面积（亩）：", "0.03"), ("总价（元）：", "99.5"),
         ("点数：", "3"), ("数据条数：", "1"), ("名字：", "field")]
LINES = "\n104.5,30.5,500.1\n104.6,30.6,501.2\n104.7,30.7,502.3\n"
ONE_LINE = "104.5,30.5,500.1 104.6,30.6,501.2 104.7,30.7,502.3"


def own(items=None, coordinates=LINES, name="field"):
    items = ITEMS if items is None else items
    text = "\n".join(f"<h4>{label}{value}</h4>" for label, value in items)
    return (f"<Placemark><name>{name}</name><visibility>1</visibility>"
            f"<description><![CDATA[{text}\n]]></description>"
            f"<LineString><coordinates>{coordinates}</coordinates></LineString></Placemark>")


# Our own form and what people do to it.
kml("own.kml", document(own() + own(name="second")))
kml("own_crlf.kml", document(own()).replace("\n", "\r\n"))
kml("own_bom.kml", b"\xef\xbb\xbf" + document(own()).encode())
kml("own_utf16.kml", b"\xff\xfe" + document(own()).replace("UTF-8", "UTF-16").encode("utf-16-le"))
kml("own_utf16_be.kml",
    b"\xfe\xff" + document(own()).replace("UTF-8", "UTF-16").encode("utf-16-be"))
kml("own_utf16_crlf.kml", b"\xff\xfe" + document(own()).replace("UTF-8", "UTF-16")
    .replace("\n", "\r\n").encode("utf-16-le"))
kml("own_gb18030.kml", document(own()).replace("UTF-8", "GB18030").encode("gb18030"))
kml("own_gbk_without_saying.kml", document(own()).encode("gbk"))
kml("own_empty_name.kml", document(own(ITEMS[:-1] + [("名字：", "")], name="202403050708") + own()))
kml("own_prefixed.kml", document(
    own().replace("<", "<k:").replace("<k:/", "</k:").replace("<k:!", "<!")
    .replace("<k:h4", "<h4").replace("</k:h4", "</h4"), f'xmlns:k="{KML}"'))
kml("own_saved_again.kml", document(own().replace("<![CDATA[", "").replace("]]>", "")
                                    .replace("<h4>", "&lt;h4&gt;").replace("</h4>", "&lt;/h4&gt;")))
kml("own_truncated.kml", document(own() + own())[:900].encode())
kml("own_truncated_in_a_character.kml", document(own()).encode()[:260])
kml("own_without_points.kml", document(own(coordinates="")))
kml("own_mixed_with_plain.kml", document(own() + placemark(line(LINES))))
kml("own_appended.kml", document(own()) * 2)

# The forms in which common programs write.
kml("earth_path.kml", document(
    '<name>My places.kml</name>\n<StyleMap id="m"><Pair><key>normal</key><styleUrl>#s</styleUrl>'
    '</Pair></StyleMap>\n<Style id="s"><LineStyle><color>ff0000ff</color></LineStyle></Style>\n'
    '<Folder><name>Folder</name><open>1</open>\n' + placemark(
        "<LookAt><longitude>104.5</longitude><latitude>30.5</latitude></LookAt>"
        + line("\n\t\t\t\t" + ONE_LINE + " \n\t\t\t"), "Path") + "</Folder>",
    f'xmlns="{KML}" xmlns:gx="http://www.google.com/kml/ext/2.2" '
    'xmlns:kml="http://www.opengis.net/kml/2.2" xmlns:atom="http://www.w3.org/2005/Atom"'))
kml("earth_polygon_with_hole.kml", document(placemark(
    "<Polygon><outerBoundaryIs><LinearRing><coordinates>\n0,0,1 4,0,1 4,4,1 0,0,1 \n</coordinates>"
    "</LinearRing></outerBoundaryIs><innerBoundaryIs><LinearRing><coordinates>\n1,1,1 2,1,1 2,2,1 "
    "1,1,1 \n</coordinates></LinearRing></innerBoundaryIs></Polygon>", "Field with a pond")))
kml("polygon_with_hole_in_lines.kml", document(placemark(
    "<Polygon><outerBoundaryIs><LinearRing><coordinates>\n0,0,1\n4,0,1\n4,4,1\n0,0,1\n"
    "</coordinates></LinearRing></outerBoundaryIs><innerBoundaryIs><LinearRing><coordinates>\n"
    "1,1,1\n2,1,1\n2,2,1\n</coordinates></LinearRing></innerBoundaryIs></Polygon>", "Field")))
kml("points.kml", document("".join(
    placemark(f"<Point><coordinates>{x},45.5,0</coordinates></Point>", f"P{x}")
    for x in range(1, 6))))
kml("point_without_description.kml", document(
    "<Placemark><name>P</name><Point><coordinates>1.5,2.5</coordinates></Point></Placemark>"))
kml("lines.kml", document(placemark(line(LINES), "Lines")))
kml("lines_without_namespace.kml", document(placemark(line(LINES), "Lines"), ""))
kml("lines_prefixed.kml", document(
    placemark(line(LINES), "Lines").replace("</", "\0").replace("<", "<kml:").replace("\0", "</kml:"),
    f'xmlns:kml="{KML}"'))
kml("lines_undeclared_prefix.kml", document(
    placemark(line(LINES), "Lines").replace("</", "\0").replace("<", "<kml:").replace("\0", "</kml:"),
    ""))
kml("lines_bom_crlf.kml",
    b"\xef\xbb\xbf" + document(placemark(line(LINES), "Lines")).replace("\n", "\r\n").encode())
kml("lines_old_mac.kml", document(placemark(line(LINES), "Lines")).replace("\n", "\r"))
kml("multi_geometry.kml", document(placemark(
    "<MultiGeometry>" + line(LINES) + line(LINES) + "<Point><coordinates>9,9,9</coordinates></Point>"
    "</MultiGeometry>", "Several")))
kml("multi_geometry_one_line.kml", document(placemark(
    "<MultiGeometry>" + line(ONE_LINE) + line("1,2 3,4") + "</MultiGeometry>", "Several")))
kml("gx_track.kml", document(placemark(
    "<gx:Track><altitudeMode>absolute</altitudeMode>"
    + "".join(f"<when>2024-03-05T07:0{i}:00Z</when>" for i in range(4))
    + "".join(f"<gx:coord>104.{i} 30.{i} 50{i}</gx:coord>" for i in range(4)) + "</gx:Track>",
    "Track"), f'xmlns="{KML}" xmlns:gx="http://www.google.com/kml/ext/2.2"'))
kml("gx_multi_track.kml", document(placemark(
    "<gx:MultiTrack>" + 2 * "<gx:Track><gx:coord>1 2 3</gx:coord><gx:coord>4 5 6</gx:coord></gx:Track>"
    + "</gx:MultiTrack>", "Tracks"), f'xmlns="{KML}" xmlns:gx="http://www.google.com/kml/ext/2.2"'))
kml("gx_track_of_two_numbers.kml", document(placemark(
    "<gx:Track><gx:coord>1 2</gx:coord></gx:Track>"),
    f'xmlns="{KML}" xmlns:gx="http://www.google.com/kml/ext/2.2"'))
kml("extended_data.kml", document(placemark(
    '<ExtendedData><SchemaData schemaUrl="#s"><SimpleData name="name">inner</SimpleData>'
    "</SchemaData></ExtendedData>" + line(LINES), "Shape")))
kml("html_description.kml", document(placemark(
    line(LINES), "Html", "<![CDATA[<table><tr><td>a</td></tr></table>]]>")))
kml("balloon_after_the_geometry.kml", document(
    "<Placemark>" + line(LINES) + "<name>Late</name><description>words</description></Placemark>"))
kml("schema_only.kml", document('<Schema name="s" id="s"><SimpleField type="int" name="n"/></Schema>'))
kml("network_link.kml", document(
    "<NetworkLink><Link><href>https://example.invalid/a.kml</href></Link></NetworkLink>"))
kml("ground_overlay.kml", document(
    "<GroundOverlay><LatLonBox><north>1</north><south>0</south></LatLonBox></GroundOverlay>"))
kml("root_is_a_placemark.kml", HEAD + placemark(line(LINES), "Alone"))
kml("spaces_in_tuples.kml", document(placemark(line("\n104.5, 30.5, 500\n104.6, 30.6, 501\n"), "Spaces")))
kml("decimal_commas.kml", document(placemark(line("\n104,5,30,5,500,1\n104,6,30,6,501,2\n"), "Commas")))
kml("latitude_first.kml", document(placemark(line("30.5,104.5,500 30.6,104.6,501"), "Swapped")))
kml("degrees_out_of_range.kml", document(placemark(line("181,2,3 104.5,30.5,7 4,91,6"), "Range")))
kml("plane_coordinates.kml", document(placemark(line("\n3387000.25,35501972.5,7\n"), "Plane")))
kml("entities.kml", HEAD + '<!DOCTYPE kml [<!ENTITY n "named">]>\n'
    f'<kml xmlns="{KML}">' + placemark(line(LINES), "&n; &lt;&amp;&#65;") + "</kml>")
kml("latin1.kml", document(placemark(line(LINES), "Grün")).replace("UTF-8", "ISO-8859-1")
    .encode("latin-1"))

# Damaged, hostile and no KML at all.
kml("empty.kml", b"")
kml("blanks.kml", b" \n \n")
kml("bom_only.kml", b"\xef\xbb\xbf")
kml("zero_bytes.kml", bytes(512))
kml("binary.kml", random.Random(1).randbytes(4096))
kml("zip_archive.kml", b"PK\x03\x04\x14\x00\x00\x00\x08\x00" + random.Random(2).randbytes(300) + b"doc.kml")
kml("png_image.kml", b"\x89PNG\r\n\x1a\n\x00\x00\x00\rIHDR" + bytes(64))
kml("html_page.kml", "<!DOCTYPE html><html><body><p>Not found<br></body></html>")
kml("json.kml", '{"type":"LineString","coordinates":[[1,2],[3,4]]}')
kml("csv_rows.kml", "longitude,latitude\n104.5,30.5\n")
kml("truncated_in_a_tag.kml", document(placemark(line(LINES)))[:-60] + "<coord")
kml("truncated_in_coordinates.kml", document(placemark(line(LINES))).split("104.7")[0])
kml("truncated_behind_a_block.kml", document(own() + placemark(line(LINES))).split("</LineString>")[0])
kml("wrong_end_tag.kml", document(placemark(line(LINES)).replace("</Placemark>", "</Plasemark>")))
kml("two_roots.kml", document(placemark(line(LINES))) * 2)
kml("zero_byte_inside.kml", document(placemark(line(LINES), "a\0b")).encode())
kml("bad_utf8.kml", document(placemark(line(LINES), "a\0b")).encode().replace(b"\0", b"\xff\xc3"))
kml("unclosed_cdata.kml", document(own()).replace("]]>", ""))
kml("unquoted_attribute.kml", document(placemark(line(LINES)), f"xmlns={KML}"))
kml("entity_bomb.kml", HEAD + "<!DOCTYPE kml [<!ENTITY a \"0,0 0,0 0,0 0,0 \">"
    + "".join(f'<!ENTITY {chr(98 + i)} "{(chr(38) + chr(97 + i) + ";") * 10}">' for i in range(12))
    + f']>\n<kml xmlns="{KML}">' + placemark(line("&m;"), "&m;") + "</kml>")
kml("entity_recursion.kml", HEAD + '<!DOCTYPE kml [<!ENTITY a "&b;"><!ENTITY b "&a;">]>\n'
    f'<kml xmlns="{KML}">' + placemark(line("1,2\n&a;")) + "</kml>")
kml("external_entity.kml", HEAD + '<!DOCTYPE kml [<!ENTITY x SYSTEM "file:///etc/hostname">]>\n'
    f'<kml xmlns="{KML}">' + placemark(line(LINES), "&x;") + "</kml>")
kml("deep_nesting.kml", f'<kml xmlns="{KML}">' + "<Folder>" * 1000 + placemark(line(LINES), "Deep")
    + "</Folder>" * 1000 + "</kml>")
kml("placemarks_in_placemarks.kml", document("<Placemark>" * 50 + line(LINES) + "</Placemark>" * 50))
kml("geometry_without_coordinates.kml", document(placemark("<Point></Point>")))
kml("coordinates_of_words.kml", document(placemark(line("north,east,up\nleft,right"))))
kml("empty_coordinates.kml", document(placemark("<Point><coordinates/></Point>")))
kml("numbers_of_all_kinds.kml", document(placemark(
    line("1e1,+2.,.5 -1E-1,1e400,0 0,0,1e400 nan,inf 0x1,0x2 1,2,3,4 ,,5,6,,"))))

# GPX, of which only our own is read.
SPACE = "http://www.topografix.com/GPX/1/1"


def gpx_document(inside, creator="Velmo", attributes=""):
    return (f'{HEAD}<gpx version="1.1" creator="{creator}" xmlns="{SPACE}"{attributes}>\n'
            "<metadata><name>Sample GPX File</name><author>Marlund</author></metadata>\n"
            f"{inside}\n</gpx>\n")


NAMES = ["time", "measurementMethod", "slopeDegrees", "muValue", "unitPrice", "distance",
         "areaSquareMeters", "areaMu", "totalPrice", "pointCount", "dataCount", "name"]
DESC = "<desc>" + "".join(f"<{name}>{value}</{name}>"
                          for name, (_, value) in zip(NAMES, ITEMS)) + "</desc>"


def gpx_points(element):
    return "".join(f'<{element} lat="30.{i}" lon="104.{i}"><ele>50{i}</ele></{element}>'
                   for i in range(3))


ROUTE = f"<rte><name>field</name>{DESC}{gpx_points('rtept')}</rte>"
TRACK = f"<trk><name>field</name>{DESC}<trkseg>{gpx_points('trkpt')}</trkseg></trk>"
WAYPOINT = f'<wpt lat="30.5" lon="104.5"><ele>500</ele><name>field</name>{DESC}</wpt>'
ALL = ROUTE + TRACK + WAYPOINT

gpx("own.gpx", gpx_document(ALL))
gpx("own_bom_crlf.gpx", b"\xef\xbb\xbf" + gpx_document(ALL).replace("\n", "\r\n").encode())
gpx("own_utf16.gpx", b"\xff\xfe" + gpx_document(ALL).replace("UTF-8", "UTF-16").encode("utf-16-le"))
gpx("own_appended.gpx", gpx_document(ROUTE) + gpx_document(TRACK))
gpx("own_prefixed.gpx", f'{HEAD}<g:gpx creator="Velmo" xmlns:g="{SPACE}"><g:wpt lat="1" lon="2">'
    "<g:ele>3</g:ele></g:wpt></g:gpx>")
gpx("own_without_ele.gpx", gpx_document('<rte><rtept lat="1" lon="2"/></rte>'))
gpx("own_without_points.gpx", gpx_document("<rte/><trk/><wpt/>"))
gpx("own_entity.gpx", f'{HEAD}<!DOCTYPE gpx [<!ENTITY e "500">]>\n<gpx creator="Velmo">'
    '<wpt lat="1" lon="2"><ele>&e;</ele></wpt></gpx>')
gpx("element_named_gpx_inside.gpx", gpx_document(WAYPOINT + "<gpx/>" + ROUTE))
gpx("truncated.gpx", gpx_document(ALL)[:700])
gpx("truncated_in_a_point.gpx", gpx_document(TRACK).split('<trkpt lat="30.1"')[0] + '<trkpt lat="3')
gpx("truncated_before_the_end.gpx", gpx_document(ALL).replace("</gpx>", ""))
gpx("wrong_end_tag.gpx", gpx_document(ALL.replace("</rtept>", "</trkpt>", 1)))
gpx("entity_bomb.gpx", HEAD + '<!DOCTYPE gpx [<!ENTITY a "0123456789">'
    + "".join(f'<!ENTITY {chr(98 + i)} "{(chr(38) + chr(97 + i) + ";") * 10}">' for i in range(8))
    + ']>\n<gpx creator="Velmo"><wpt lat="1" lon="2"><ele>&i;</ele></wpt></gpx>')
gpx("deep_nesting.gpx", '<gpx creator="Velmo">' + "<trk><trkseg><trkpt>" * 2000 + "</gpx>")
gpx("another_program.gpx", gpx_document(
    '<trk><name>Morning run</name><trkseg><trkpt lat="30.5" lon="104.5"><ele>500</ele>'
    "<time>2024-03-05T07:08:09Z</time></trkpt></trkseg></trk>", "GPS logger"))
gpx("lower_case_creator.gpx", gpx_document(ALL, "velmo"))
gpx("no_creator.gpx", f'<gpx xmlns="{SPACE}"/>')
gpx("kml_inside.gpx", document(placemark(line(LINES))))
gpx("empty.gpx", b"")
gpx("binary.gpx", random.Random(3).randbytes(2048))
gpx("bad_utf8.gpx", gpx_document(ALL).encode().replace(b"field", b"\xff\xfe"))
