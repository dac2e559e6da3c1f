#pragma once

#include "exchange/kml.h"

// What is read of each file of corpus/kml/ and corpus/gpx/.

/// What becomes of a file of corpus/kml/ in degrees.
struct kml_file
{
    const char* file;
    kml_result result;
    int records;
    int points;
    const char* name;   ///< of the first record
    const char* method; ///< of the first record
    int twice = 0;      ///< records that equal one before and do not reach the tables
};

// Where the name is "0" the last resort read the file. One reason is that the first
// pass leaves out the bytes of carriage returns: that glues lines together which end
// in nothing else, and shifts UTF-16 where a character has such a byte, as "\u540d" has.
inline constexpr kml_file kml_corpus[] = {
    {"bad_utf8.kml", kml_own, 1, 3, "0", "航线"},
    {"balloon_after_the_geometry.kml", kml_plain, 1, 3, "Late", "航线"},
    {"binary.kml", kml_failed, 0, 0, "", ""},
    {"blanks.kml", kml_failed, 0, 0, "", ""},
    {"bom_only.kml", kml_failed, 0, 0, "", ""},
    {"coordinates_of_words.kml", kml_plain, 1, 2, "Foreign", "航线"},
    {"csv_rows.kml", kml_failed, 0, 0, "", ""},
    {"decimal_commas.kml", kml_own, 1, 2, "0", "航线"},
    {"deep_nesting.kml", kml_plain, 1, 3, "Deep", "航线"},
    {"degrees_out_of_range.kml", kml_own, 1, 1, "0", "航点"},
    {"earth_path.kml", kml_own, 1, 3, "0", "航线"},
    {"earth_polygon_with_hole.kml", kml_own, 2, 8, "0", "航线"},
    {"empty.kml", kml_failed, 0, 0, "", ""},
    {"empty_coordinates.kml", kml_failed, 0, 0, "", ""},
    {"entities.kml", kml_plain, 1, 3, "named <&A", "航线"},
    {"entity_bomb.kml", kml_failed, 0, 0, "", ""},
    {"entity_recursion.kml", kml_own, 1, 1, "0", "航点"},
    {"extended_data.kml", kml_plain, 1, 3, "Shape", "航线"},
    {"external_entity.kml", kml_plain, 1, 3, "", "航线"},
    {"geometry_without_coordinates.kml", kml_failed, 0, 0, "", ""},
    {"ground_overlay.kml", kml_failed, 0, 0, "", ""},
    {"gx_multi_track.kml", kml_own, 2, 4, "0", "航线", 1},
    {"gx_track.kml", kml_own, 1, 4, "0", "航线"},
    {"gx_track_of_two_numbers.kml", kml_failed, 0, 0, "", ""},
    {"html_description.kml", kml_own, 1, 3, "0", "航线"},
    {"html_page.kml", kml_failed, 0, 0, "", ""},
    {"json.kml", kml_failed, 0, 0, "", ""},
    {"latin1.kml", kml_plain, 1, 3, "Grün", "航线"},
    {"latitude_first.kml", kml_failed, 0, 0, "", ""},
    {"lines.kml", kml_plain, 1, 3, "Lines", "航线"},
    {"lines_bom_crlf.kml", kml_plain, 1, 3, "Lines", "航线"},
    {"lines_old_mac.kml", kml_own, 1, 3, "0", "航线"},
    {"lines_prefixed.kml", kml_plain, 1, 3, "Lines", "航线"},
    {"lines_undeclared_prefix.kml", kml_own, 1, 3, "0", "航线"},
    {"lines_without_namespace.kml", kml_plain, 1, 3, "Lines", "航线"},
    {"multi_geometry.kml", kml_plain, 1, 7, "Several", "航点"},
    {"multi_geometry_one_line.kml", kml_plain, 1, 1, "Several", "航线"},
    {"network_link.kml", kml_failed, 0, 0, "", ""},
    {"numbers_of_all_kinds.kml", kml_own, 1, 4, "0", "航线"},
    {"own.kml", kml_own, 2, 6, "field", "航线", 1},
    {"own_appended.kml", kml_own, 2, 6, "0", "航线", 1},
    {"own_bom.kml", kml_own, 1, 3, "field", "航线"},
    {"own_crlf.kml", kml_own, 1, 3, "field", "航线"},
    {"own_empty_name.kml", kml_own, 1, 3, "202403050708", "航线"},
    {"own_gb18030.kml", kml_own, 1, 3, "field", "航线"},
    {"own_gbk_without_saying.kml", kml_own, 1, 3, "0", "航线"},
    {"own_mixed_with_plain.kml", kml_plain, 2, 6, "field", "航线"},
    {"own_prefixed.kml", kml_own, 1, 3, "field", "航线"},
    {"own_saved_again.kml", kml_plain, 1, 3, "field", "航线"},
    {"own_truncated.kml", kml_own, 1, 3, "0", "航线"},
    {"own_truncated_in_a_character.kml", kml_failed, 0, 0, "", ""},
    {"own_utf16.kml", kml_own, 1, 3, "0", "航线"},
    {"own_utf16_be.kml", kml_own, 1, 3, "0", "航线"},
    {"own_utf16_crlf.kml", kml_own, 1, 3, "0", "航线"},
    {"own_without_points.kml", kml_failed, 0, 0, "", ""},
    {"placemarks_in_placemarks.kml", kml_own, 1, 3, "0", "航线"},
    {"plane_coordinates.kml", kml_plain, 1, 1, "Plane", "航线"},
    {"png_image.kml", kml_failed, 0, 0, "", ""},
    {"point_without_description.kml", kml_own, 1, 1, "0", "航点"},
    {"points.kml", kml_plain, 5, 5, "P1", "航点"},
    {"polygon_with_hole_in_lines.kml", kml_plain, 1, 4, "Field", "航迹"},
    {"root_is_a_placemark.kml", kml_plain, 1, 3, "Alone", "航线"},
    {"schema_only.kml", kml_failed, 0, 0, "", ""},
    {"spaces_in_tuples.kml", kml_plain, 1, 2, "Spaces", "航线"},
    {"truncated_behind_a_block.kml", kml_own, 1, 3, "0", "航线"},
    {"truncated_in_a_tag.kml", kml_plain, 1, 3, "Foreign", "航线"},
    {"truncated_in_coordinates.kml", kml_failed, 0, 0, "", ""},
    {"two_roots.kml", kml_plain, 1, 3, "Foreign", "航线"},
    {"unclosed_cdata.kml", kml_own, 1, 3, "0", "航线"},
    {"unquoted_attribute.kml", kml_own, 1, 3, "0", "航线"},
    {"wrong_end_tag.kml", kml_plain, 1, 3, "Foreign", "航线"},
    {"zero_byte_inside.kml", kml_own, 1, 3, "0", "航线"},
    {"zero_bytes.kml", kml_failed, 0, 0, "", ""},
    {"zip_archive.kml", kml_failed, 0, 0, "", ""},
};

struct gpx_file
{
    const char* file;
    bool read;
    int records; ///< also of a reading that failed later
    int points;
};

inline constexpr gpx_file gpx_corpus[] = {
    {"another_program.gpx", false, 0, 0},
    {"bad_utf8.gpx", false, 0, 0},
    {"binary.gpx", false, 0, 0},
    {"deep_nesting.gpx", false, 1, 1},
    {"element_named_gpx_inside.gpx", true, 1, 1},
    {"empty.gpx", false, 0, 0},
    {"entity_bomb.gpx", false, 1, 1},
    {"kml_inside.gpx", false, 0, 0},
    {"lower_case_creator.gpx", false, 0, 0},
    {"no_creator.gpx", false, 0, 0},
    {"own.gpx", true, 3, 7},
    {"own_appended.gpx", true, 1, 3},
    {"own_bom_crlf.gpx", true, 3, 7},
    {"own_entity.gpx", true, 1, 1},
    {"own_prefixed.gpx", true, 1, 1},
    {"own_utf16.gpx", true, 3, 7},
    {"own_without_ele.gpx", true, 1, 1},
    {"own_without_points.gpx", true, 3, 1},
    {"truncated.gpx", false, 1, 3},
    {"truncated_before_the_end.gpx", false, 3, 7},
    {"truncated_in_a_point.gpx", false, 1, 1},
    {"wrong_end_tag.gpx", false, 1, 1},
};
