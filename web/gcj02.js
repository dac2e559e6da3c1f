"use strict";

/**
 * The shift between WGS-84, in which the instrument measures, and GCJ-02, in
 * which maps of mainland China are published. Longitude stands before latitude
 * everywhere here, both in decimal degrees.
 */
const Gcj02 = (() => {
  // The Krasovsky ellipsoid, which the published formula is made for.
  const SEMI_MAJOR_AXIS = 6378245.0; // metres
  const ECCENTRICITY_SQUARED = 0.00669342162296594323;

  // The rectangle outside which no map is shifted.
  const RECTANGLE = { west: 72.004, east: 137.8347, south: 0.8293, north: 55.8271 };

  // The mainland and Hainan in rough lines: within some ten kilometres along
  // the land border, generous at sea but for the islands that are mapped
  // without the shift. From the Amur clockwise.
  const MAINLAND = [
    [121.4, 53.34], [123.6, 53.58], [125.7, 53.07], [126.95, 51.35], [127.45, 50.4],
    [127.7, 49.75], [129.5, 49.43], [130.75, 48.87], [131.0, 47.72], [132.6, 47.75],
    [133.1, 48.12], [134.3, 48.42], [134.75, 48.3], [134.0, 46.6], [133.1, 45.1], [131.9, 45.32], [131.0, 44.83],
    [131.3, 43.5], [130.65, 42.65], [130.63, 42.42], [130.2, 42.88], [129.75, 42.45],
    [128.95, 42.05], [128.05, 41.98], [127.0, 41.72], [126.0, 40.93], [124.9, 40.46],
    [124.37, 40.05], [124.0, 39.6], [123.0, 38.8], [123.2, 37.5], [122.6, 36.4],
    [121.5, 35.3], [122.3, 33.4], [123.1, 31.5], [123.2, 29.9], [122.3, 28.0],
    [121.0, 26.95], [120.4, 26.6], [119.85, 26.3], [119.78, 26.05], [119.75, 25.3], [119.1, 24.75],
    [118.65, 24.53], [118.25, 24.5], [118.2, 24.35], [118.3, 23.6], [116.9, 22.7],
    [115.0, 22.3], [114.55, 22.4], [114.45, 22.57], [114.23, 22.56], [114.15, 22.545],
    [114.06, 22.515], [114.02, 22.495], [113.93, 22.46], [113.87, 22.35], [113.82, 22.05],
    [113.0, 21.4], [111.6, 20.9], [111.5, 19.5], [110.7, 18.2], [109.5, 17.9],
    [108.3, 18.6], [108.3, 20.6], [108.1, 21.45], [107.97, 21.54], [107.3, 21.62],
    [106.7, 22.02], [106.7, 22.75], [105.9, 22.94], [105.3, 23.36], [104.8, 22.85],
    [104.0, 22.52], [103.6, 22.75], [103.0, 22.47], [102.45, 22.75], [101.75, 22.45],
    [101.8, 21.2], [101.2, 21.28], [100.2, 21.47], [99.2, 22.13], [99.5, 22.95],
    [98.9, 23.2], [98.7, 24.08], [97.75, 23.9], [97.55, 24.75], [98.15, 25.6],
    [98.7, 26.2], [98.7, 27.5], [97.4, 28.3], [96.2, 28.45], [95.4, 29.05],
    [94.2, 29.05], [93.3, 28.65], [92.5, 27.85], [91.65, 27.8], [90.0, 28.3],
    [89.1, 27.6], [88.9, 27.32], [88.75, 28.0], [88.1, 27.88], [86.9, 27.98],
    [85.9, 28.0], [85.1, 28.4], [84.2, 28.9], [83.5, 29.2], [82.1, 30.1],
    [81.2, 30.1], [80.2, 30.6], [78.8, 31.4], [78.7, 32.6], [79.2, 33.2],
    [78.6, 34.3], [77.8, 35.45], [76.6, 35.9], [75.8, 36.7], [74.7, 37.1],
    [74.9, 38.4], [73.8, 38.6], [73.5, 39.4], [73.9, 40.0], [74.9, 40.45],
    [76.4, 40.4], [76.9, 41.0], [78.1, 41.1], [79.9, 42.05], [80.2, 43.0],
    [80.75, 43.15], [80.35, 44.15], [80.4, 45.05], [81.9, 45.18], [82.55, 45.2],
    [82.3, 45.55], [83.0, 47.2], [85.5, 47.05], [85.75, 48.35], [86.75, 48.75],
    [87.8, 49.17], [88.0, 48.6], [89.7, 48.0], [90.9, 46.9], [91.0, 45.3],
    [93.5, 45.0], [95.4, 44.3], [96.35, 42.75], [99.5, 42.57], [101.8, 42.5],
    [105.0, 41.6], [107.5, 42.42], [109.4, 42.45], [111.0, 43.3], [111.98, 43.75],
    [111.5, 44.4], [111.9, 45.05], [113.6, 44.77], [114.5, 45.4], [116.2, 45.72],
    [116.7, 46.35], [118.3, 46.75], [119.8, 46.65], [119.9, 46.85], [118.5, 47.95],
    [117.8, 47.98], [115.6, 47.9], [116.1, 48.85], [116.75, 49.85], [117.8, 49.52],
    [119.2, 50.15], [119.3, 50.6], [120.7, 52.0], [120.65, 52.4], [120.1, 52.7],
  ];

  // Macau, which the outline leaves inside.
  const MACAU = { west: 113.528, east: 113.61, south: 22.105, north: 22.215 };

  const inRectangle = (box, longitude, latitude) =>
    longitude >= box.west && longitude <= box.east &&
    latitude >= box.south && latitude <= box.north;

  /**
   * Whether maps of this place are shifted.
   * @param {number} longitude degrees
   * @param {number} latitude degrees
   * @returns {boolean}
   */
  function applies(longitude, latitude) {
    if (!inRectangle(RECTANGLE, longitude, latitude) || inRectangle(MACAU, longitude, latitude))
      return false;
    let inside = false;
    let [previousX, previousY] = MAINLAND[MAINLAND.length - 1];
    for (const [x, y] of MAINLAND) {
      if ((y > latitude) !== (previousY > latitude) &&
          longitude < (previousX - x) * (latitude - y) / (previousY - y) + x)
        inside = !inside;
      previousX = x;
      previousY = y;
    }
    return inside;
  }

  /**
   * The formula alone, wherever the place is.
   * @param {number} longitude degrees, WGS-84
   * @param {number} latitude degrees, WGS-84
   * @returns {[number, number]} longitude and latitude in degrees, GCJ-02
   */
  function shifted(longitude, latitude) {
    const x = longitude - 105;
    const y = latitude - 35;
    const root = Math.sqrt(Math.abs(x));
    const short = 20 * Math.sin(6 * x * Math.PI) + 20 * Math.sin(2 * x * Math.PI);
    const north = -100 + 2 * x + 3 * y + 0.2 * y * y + 0.1 * x * y + 0.2 * root + (short +
      20 * Math.sin(y * Math.PI) + 40 * Math.sin(y / 3 * Math.PI) +
      160 * Math.sin(y / 12 * Math.PI) + 320 * Math.sin(y / 30 * Math.PI)) * 2 / 3;
    const east = 300 + x + 2 * y + 0.1 * x * x + 0.1 * x * y + 0.1 * root + (short +
      20 * Math.sin(x * Math.PI) + 40 * Math.sin(x / 3 * Math.PI) +
      150 * Math.sin(x / 12 * Math.PI) + 300 * Math.sin(x / 30 * Math.PI)) * 2 / 3;
    const radians = latitude / 180 * Math.PI;
    const sine = Math.sin(radians);
    const w2 = 1 - ECCENTRICITY_SQUARED * sine * sine;
    const meridianRadius = SEMI_MAJOR_AXIS * (1 - ECCENTRICITY_SQUARED) / (w2 * Math.sqrt(w2));
    const parallelRadius = SEMI_MAJOR_AXIS / Math.sqrt(w2) * Math.cos(radians);
    return [longitude + east / parallelRadius * 180 / Math.PI,
            latitude + north / meridianRadius * 180 / Math.PI];
  }

  return Object.freeze({ applies, shifted });
})();
