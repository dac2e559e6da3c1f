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

  return Object.freeze({ shifted });
})();
