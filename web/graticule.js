"use strict";

/**
 * Meridians and parallels under the figures, with their degrees at the edges.
 * They hide behind tiles and stand alone where there are none.
 */
const Graticule = ((L) => {
  const STEPS = [
    0.0001, 0.0002, 0.0005, 0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 30,
  ]; // degrees
  const WIDTH_WANTED = 110; // pixels from line to line, at least
  const PIECES = 12; // of each line, which the shift of the map bends
  const LOOK = { line: "#cfd8de", text: "#6b7a85", font: "11px 'Microsoft YaHei', 'Noto Sans CJK SC', sans-serif" };

  const stepFor = (degreesPerPixel) =>
    STEPS.find((step) => step >= degreesPerPixel * WIDTH_WANTED) || STEPS[STEPS.length - 1];

  /** The degrees of a line as text, with as many decimals as the step needs. */
  function label(degrees, step, positive, negative) {
    const decimals = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
    const text = Math.abs(degrees).toFixed(decimals);
    return `${text}°${Number(text) === 0 ? "" : degrees < 0 ? negative : positive}`;
  }

  return L.Path.extend({
    options: { interactive: false },

    /** @param {function(number, number): function} placing as of a provider */
    initialize(placing, options) {
      L.setOptions(this, options);
      this._placing = placing;
    },

    _reset() { this._project(); },
    _project() { this._pxBounds = this._renderer._bounds; },
    _update() { this._project(); },

    _updatePath() {
      const renderer = this._renderer;
      if (!renderer._drawing)
        return;
      const context = renderer._ctx;
      const map = this._map;
      const { min, max } = renderer._bounds;
      const northWest = map.layerPointToLatLng(min);
      const southEast = map.layerPointToLatLng(max);
      const step = stepFor((southEast.lng - northWest.lng) / (max.x - min.x));
      const west = Math.max(-180, Math.floor(northWest.lng / step - 1) * step);
      const east = Math.min(180, southEast.lng + step);
      const south = Math.max(-85, Math.floor(southEast.lat / step - 1) * step);
      const north = Math.min(85, northWest.lat + step);
      // The middle of the view decides for all lines, as the start does for a figure.
      const centre = map.getCenter();
      const place = this._placing(centre.lng, centre.lat);
      const toPixel = (longitude, latitude) => {
        const placed = place(longitude, latitude);
        return map.latLngToLayerPoint([placed[1], placed[0]]);
      };
      const drawLine = (from, to) => {
        context.beginPath();
        for (let piece = 0; piece <= PIECES; ++piece) {
          const point = toPixel(from[0] + (to[0] - from[0]) * piece / PIECES,
                                from[1] + (to[1] - from[1]) * piece / PIECES);
          context.lineTo(point.x, point.y);
        }
        context.stroke();
      };

      context.save();
      context.strokeStyle = LOOK.line;
      context.fillStyle = LOOK.text;
      context.font = LOOK.font;
      context.lineWidth = 1;
      const view = map.containerPointToLayerPoint([0, 0]);
      const leftmost = map.containerPointToLatLng([0, 0]).lng;
      // Counted, not added up, so that no error gathers in the labels.
      for (let i = Math.ceil(west / step - 1e-9); i * step <= east; ++i) {
        drawLine([i * step, south], [i * step, north]);
        context.textBaseline = "top";
        context.fillText(label(i * step, step, "E", "W"), toPixel(i * step, centre.lat).x + 4, view.y + 4);
      }
      for (let i = Math.ceil(south / step - 1e-9); i * step <= north; ++i) {
        drawLine([west, i * step], [east, i * step]);
        context.textBaseline = "bottom";
        context.fillText(label(i * step, step, "N", "S"), view.x + 6, toPixel(leftmost, i * step).y - 3);
      }
      context.restore();
    },
  });
})(window.L);
