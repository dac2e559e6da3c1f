"use strict";

/**
 * Figures: from the numbers of the packets to lines on a canvas. Points lie in
 * flat arrays and are placed once; each redraw walks them and leaves out what
 * makes no difference of a pixel.
 */
const Figures = ((L) => {
  const KIND = Object.freeze({ AREA: 1, LINE: 2, WAYPOINT: 3 });
  const WORLD = 256; // width of the world in the map's pixels at zoom 0
  const MAX_LATITUDE = 85.0511287798; // where the square world ends

  // Within one path the canvas takes time with the square of what crosses.
  const POINTS_PER_STROKE = 400;
  // Beyond this the white edge of a line costs more than it shows.
  const MAX_POINTS_WITH_EDGE = 20000;

  const LOOK = {
    edge: "rgba(255, 255, 255, 0.85)",
    edgeWidth: 5,
    lineWidth: 2.5,
    area: { line: "#c2410c", fill: "rgba(249, 115, 22, 0.28)" },
    line: { line: "#1d4ed8" },
    start: { radius: 5, fill: "#16a34a" },
    speck: { below: 8, radius: 4, fill: "#c2410c" }, // an area too small to be seen
    waypoint: { radius: 8, height: 22, fill: "#dc2626" },
    ring: "#ffffff",
  };

  /** The kind of a figure as the program writes it; none means a line. */
  function kindOf(value) {
    const kind = Number(value);
    return kind === KIND.AREA || kind === KIND.WAYPOINT ? kind : KIND.LINE;
  }

  /**
   * Place in the world's square, from its north-west corner.
   * @param {number} longitude degrees
   * @param {number} latitude degrees
   * @returns {[number, number]} x to the east and y to the south, 0 to 256
   */
  function toWorld(longitude, latitude) {
    const held = Math.max(-MAX_LATITUDE, Math.min(MAX_LATITUDE, latitude));
    const sine = Math.sin(held * Math.PI / 180);
    return [WORLD * (longitude / 360 + 0.5),
            WORLD * (0.5 - Math.log((1 + sine) / (1 - sine)) / (4 * Math.PI))];
  }

  /** The way back: [longitude, latitude] in degrees. */
  function fromWorld(x, y) {
    return [(x / WORLD - 0.5) * 360,
            Math.atan(Math.sinh((0.5 - y / WORLD) * 2 * Math.PI)) * 180 / Math.PI];
  }

  /** The same for x, y, x, y, ...: longitude, latitude, longitude, ... */
  function allFromWorld(world) {
    return Array.from({ length: world.length / 2 }, (_, i) => fromWorld(world[2 * i], world[2 * i + 1])).flat();
  }

  /**
   * Makes a figure of gathered numbers. A pair that is no place on earth is
   * left out, as is a last number without its partner. The first place decides
   * how all others are put into the provider's system.
   * @param {string} id
   * @param {number} kind
   * @param {Array<Array<number>>} chunks longitude, latitude, longitude, ... in degrees, WGS-84
   * @param {function(number, number): function} placing as of a provider
   * @returns {?object} null if no pair is left
   */
  function make(id, kind, chunks, placing) {
    let total = 0;
    for (const chunk of chunks)
      total += chunk.length;
    const measured = new Float64Array(total);
    let used = 0;
    for (const chunk of chunks) {
      for (let i = 0; i < chunk.length; ++i)
        measured[used++] = typeof chunk[i] === "number" ? chunk[i] : NaN;
    }

    const world = new Float64Array(total);
    const box = { west: Infinity, north: Infinity, east: -Infinity, south: -Infinity };
    let kept = 0;
    let place = null;
    for (let i = 0; i + 1 < used; i += 2) {
      const longitude = measured[i];
      const latitude = measured[i + 1];
      if (!(Math.abs(longitude) <= 180 && Math.abs(latitude) <= 90))
        continue;
      if (place === null)
        place = placing(longitude, latitude);
      const placed = place(longitude, latitude);
      const [x, y] = toWorld(placed[0], placed[1]);
      measured[kept] = longitude;
      measured[kept + 1] = latitude;
      world[kept] = x;
      world[kept + 1] = y;
      kept += 2;
      if (x < box.west) box.west = x;
      if (x > box.east) box.east = x;
      if (y < box.north) box.north = y;
      if (y > box.south) box.south = y;
    }
    return kept === 0 ? null
      : { id, kind, measured: measured.subarray(0, kept), world: world.subarray(0, kept), box };
  }

  // One pair of arrays for all figures: pixels that a figure comes down to.
  let pixels = new Float64Array(4096);
  let clipped = new Float64Array(4096);

  function room(array, length) {
    if (array.length >= length)
      return array;
    const larger = new Float64Array(Math.max(length, array.length * 2));
    larger.set(array);
    return larger;
  }

  /**
   * Writes the figure's points into `pixels`, without those that lie less than
   * a pixel from the one before.
   * @returns {number} how many numbers were written
   */
  function toPixels(world, scale, left, top) {
    pixels = room(pixels, world.length);
    let count = 0;
    let lastX = Infinity;
    let lastY = Infinity;
    const end = world.length - 2;
    for (let i = 0; i <= end; i += 2) {
      const x = world[i] * scale - left;
      const y = world[i + 1] * scale - top;
      if (Math.abs(x - lastX) + Math.abs(y - lastY) >= 1 || i === end) {
        pixels[count++] = lastX = x;
        pixels[count++] = lastY = y;
      }
    }
    return count;
  }

  /**
   * Cuts the closed ring in `pixels` to a rectangle, side by side. Far away
   * corners would be beyond what a canvas counts exactly.
   * @returns {number} how many numbers `pixels` then holds
   */
  function clipRing(count, clip) {
    const sides = [
      [0, clip.min.x, 1], [0, clip.max.x, -1], [1, clip.min.y, 1], [1, clip.max.y, -1],
    ];
    for (const [axis, limit, sign] of sides) {
      clipped = room(clipped, count * 2 + 4);
      let written = 0;
      for (let i = 0; i < count; i += 2) {
        const from = i === 0 ? count - 2 : i - 2;
        const before = (pixels[from + axis] - limit) * sign;
        const here = (pixels[i + axis] - limit) * sign;
        if ((before >= 0) !== (here >= 0)) {
          const part = before / (before - here);
          clipped[written++] = pixels[from] + (pixels[i] - pixels[from]) * part;
          clipped[written++] = pixels[from + 1] + (pixels[i + 1] - pixels[from + 1]) * part;
        }
        if (here >= 0) {
          clipped[written++] = pixels[i];
          clipped[written++] = pixels[i + 1];
        }
      }
      [pixels, clipped] = [clipped, pixels];
      count = written;
    }
    return count;
  }

  /** The part of a line from one point to another within `clip`, as [start, end] of 0 to 1, or null. */
  function visiblePart(fromX, fromY, toX, toY, clip) {
    let start = 0;
    let end = 1;
    for (const [from, step, low, high] of [[fromX, toX - fromX, clip.min.x, clip.max.x],
                                           [fromY, toY - fromY, clip.min.y, clip.max.y]]) {
      if (step === 0) {
        if (from < low || from > high)
          return null;
        continue;
      }
      const one = (low - from) / step;
      const other = (high - from) / step;
      start = Math.max(start, Math.min(one, other));
      end = Math.min(end, Math.max(one, other));
    }
    return start < end ? [start, end] : null;
  }

  /** Strokes the open line in `pixels`, in pieces that are quick to draw. */
  function strokeLine(context, count, clip, inside) {
    let open = 0;
    for (let i = 2; i < count; i += 2) {
      let fromX = pixels[i - 2];
      let fromY = pixels[i - 1];
      let toX = pixels[i];
      let toY = pixels[i + 1];
      let leaves = false;
      let enters = false;
      if (!inside) {
        if (Math.max(fromX, toX) < clip.min.x || Math.min(fromX, toX) > clip.max.x ||
            Math.max(fromY, toY) < clip.min.y || Math.min(fromY, toY) > clip.max.y) {
          if (open > 0)
            context.stroke();
          open = 0;
          continue;
        }
        const part = visiblePart(fromX, fromY, toX, toY, clip);
        if (part === null)
          continue;
        enters = part[0] > 0;
        leaves = part[1] < 1;
        const stepX = toX - fromX;
        const stepY = toY - fromY;
        toX = fromX + stepX * part[1];
        toY = fromY + stepY * part[1];
        fromX += stepX * part[0];
        fromY += stepY * part[0];
      }
      if (open === 0 || enters) {
        if (open === 0)
          context.beginPath();
        context.moveTo(fromX, fromY);
      }
      context.lineTo(toX, toY);
      ++open;
      if (open >= POINTS_PER_STROKE || leaves) {
        context.stroke();
        open = 0;
      }
    }
    if (open > 0)
      context.stroke();
  }

  function strokeTwice(context, count, colour, clip, inside) {
    context.lineJoin = "round";
    context.lineCap = "round";
    if (count <= MAX_POINTS_WITH_EDGE * 2) {
      context.strokeStyle = LOOK.edge;
      context.lineWidth = LOOK.edgeWidth;
      strokeLine(context, count, clip, inside);
    }
    context.strokeStyle = colour;
    context.lineWidth = LOOK.lineWidth;
    strokeLine(context, count, clip, inside);
  }

  function drawDot(context, x, y, look) {
    context.beginPath();
    context.arc(x, y, look.radius, 0, Math.PI * 2);
    context.fillStyle = look.fill;
    context.fill();
    context.lineWidth = 2;
    context.strokeStyle = LOOK.ring;
    context.stroke();
  }

  /** A pin whose tip stands on the place. */
  function drawPin(context, x, y) {
    const { radius, height, fill } = LOOK.waypoint;
    const middle = y - height + radius;
    context.beginPath();
    context.arc(x, middle, radius, Math.PI * 0.85, Math.PI * 0.15);
    context.lineTo(x, y);
    context.closePath();
    context.fillStyle = fill;
    context.fill();
    context.lineJoin = "round";
    context.lineWidth = 1.5;
    context.strokeStyle = LOOK.ring;
    context.stroke();
    context.beginPath();
    context.arc(x, middle, radius * 0.4, 0, Math.PI * 2);
    context.fillStyle = LOOK.ring;
    context.fill();
  }

  function drawArea(context, count, clip, inside) {
    if (!inside)
      count = clipRing(count, clip);
    if (count < 4)
      return;
    context.beginPath();
    context.moveTo(pixels[0], pixels[1]);
    for (let i = 2; i < count; i += 2)
      context.lineTo(pixels[i], pixels[i + 1]);
    context.fillStyle = LOOK.area.fill;
    context.fill("evenodd");
    // The ring back to its first point.
    pixels = room(pixels, count + 2);
    pixels[count] = pixels[0];
    pixels[count + 1] = pixels[1];
    strokeTwice(context, count + 2, LOOK.area.line, clip, true);
  }

  /**
   * Everything drawn, as one path of Leaflet's canvas renderer, which redraws
   * it when the view changes.
   */
  const Layer = L.Path.extend({
    options: { interactive: false },

    initialize(options) {
      L.setOptions(this, options);
      this._figures = [];
    },

    /** Draws these figures in place of those before. */
    show(figures) {
      this._figures = figures;
      this.redraw();
    },

    /** How many figures are drawn. */
    drawn() {
      return this._figures.length;
    },

    _reset() {
      this._project();
      this._update();
    },

    // The whole canvas: pieces of it are not worth keeping apart.
    _project() {
      this._pxBounds = this._renderer._bounds;
    },

    _update() {
      this._project();
    },

    _updatePath() {
      const renderer = this._renderer;
      if (!renderer._drawing)
        return;
      const zoom = this._map.getZoom();
      const scale = this._map.options.crs.scale(zoom) / WORLD;
      const origin = this._map.getPixelOrigin();
      const margin = LOOK.waypoint.height;
      this._draw(renderer._ctx, scale, origin, {
        min: renderer._bounds.min.subtract([margin, margin]),
        max: renderer._bounds.max.add([margin, margin]),
      });
    },

    _draw(context, scale, origin, clip) {
      for (const kind of [KIND.AREA, KIND.LINE, KIND.WAYPOINT]) {
        for (const figure of this._figures) {
          if (figure.kind === kind)
            this._drawFigure(context, figure, scale, origin, clip);
        }
      }
    },

    _drawFigure(context, figure, scale, origin, clip) {
      const { box, world } = figure;
      const west = box.west * scale - origin.x;
      const east = box.east * scale - origin.x;
      const north = box.north * scale - origin.y;
      const south = box.south * scale - origin.y;
      if (east < clip.min.x || west > clip.max.x || south < clip.min.y || north > clip.max.y)
        return;
      const inside = west >= clip.min.x && east <= clip.max.x &&
        north >= clip.min.y && south <= clip.max.y;
      if (figure.kind === KIND.WAYPOINT) {
        for (let i = 0; i < world.length; i += 2)
          drawPin(context, world[i] * scale - origin.x, world[i + 1] * scale - origin.y);
        return;
      }
      if (figure.kind === KIND.AREA && east - west < LOOK.speck.below && south - north < LOOK.speck.below) {
        drawDot(context, (west + east) / 2, (north + south) / 2, LOOK.speck);
        return;
      }
      const count = toPixels(world, scale, origin.x, origin.y);
      if (figure.kind === KIND.AREA) {
        drawArea(context, count, clip, inside);
        return;
      }
      const startX = pixels[0];
      const startY = pixels[1];
      strokeTwice(context, count, LOOK.line.line, clip, inside);
      drawDot(context, startX, startY, LOOK.start);
    },
  });

  return Object.freeze({ KIND, kindOf, fromWorld, allFromWorld, make, Layer });
})(window.L);
