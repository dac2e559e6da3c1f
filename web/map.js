"use strict";

/**
 * The page: a Leaflet map of the provider that the page names, the functions
 * that the program runs in it, and the line that says when tiles are missing.
 *
 * The program's scripts come one by one. What they ask for is gathered and
 * shown together once they pause, so that a burst of figures costs one drawing
 * and moves the view once. The functions take whatever they are given: what
 * makes no sense is ignored.
 */
const VelmoMap = (() => {
  const PAUSE = 40; // milliseconds without a script that end a burst
  const CLOSEST = 18; // zoom of the most that the providers have
  const CLOSEST_BY_ITSELF = 17; // zoom of the most that the page chooses
  const PADDING = 40; // pixels kept free around the figures
  const START = { centre: [35.5, 104], zoom: 4 }; // latitude, longitude: all of China
  const RETRY = 10000; // milliseconds until tiles are asked for again
  const PATIENCE = 8000; // milliseconds without any tile after which they count as missing

  const TEXTS = {
    zh: {
      unreachable: "无法获取地图瓦片，请检查网络连接",
      zoomIn: "放大", zoomOut: "缩小", metres: "米", kilometres: "公里",
    },
    en: {
      unreachable: "Map tiles cannot be reached. Check the network connection.",
      zoomIn: "Zoom in", zoomOut: "Zoom out", metres: "m", kilometres: "km",
    },
  };

  const provider = Providers[document.body.dataset.provider] || Providers.gaode;
  const note = document.getElementById("note");

  // The language outlives a change of the provider, which loads another page.
  const LANGUAGE_KEY = "velmo.language";
  let language = "zh";
  try {
    if (sessionStorage.getItem(LANGUAGE_KEY) === "en")
      language = "en";
  } catch (error) {
    console.warn("no session storage:", error.message);
  }

  // Map, graticule, figures

  const map = L.map("map", {
    preferCanvas: true,
    attributionControl: false,
    zoomControl: false,
    center: START.centre,
    zoom: START.zoom,
    minZoom: 2,
    maxZoom: CLOSEST,
    worldCopyJump: false,
    maxBounds: [[-85.06, -270], [85.06, 270]],
    maxBoundsViscosity: 0.5,
  });
  map.createPane("graticule").style.zIndex = 150; // below the tiles
  new Graticule(provider.place, { renderer: L.canvas({ pane: "graticule", padding: 0.25 }) }).addTo(map);
  const layer = new Figures.Layer({ renderer: L.canvas({ padding: 0.25 }) }).addTo(map);

  // Controls, in the language in force

  const Scale = L.Control.Scale.extend({
    _updateMetric(maxMeters) {
      const metres = this._getRoundNum(maxMeters);
      const texts = TEXTS[language];
      this._updateScale(this._mScale,
        metres < 1000 ? `${metres} ${texts.metres}` : `${metres / 1000} ${texts.kilometres}`,
        metres / maxMeters);
    },
  });
  let controls = [];

  function showControls() {
    for (const control of controls)
      control.remove();
    const texts = TEXTS[language];
    controls = [
      L.control.zoom({ position: "topright", zoomInTitle: texts.zoomIn, zoomOutTitle: texts.zoomOut }),
      new Scale({ position: "bottomleft", imperial: false, maxWidth: 120 }),
      // Plain text: a link could lead nowhere from here.
      L.control.attribution({ position: "bottomright", prefix: "Leaflet" })
        .addAttribution(provider.attribution[language]),
    ];
    for (const control of controls)
      control.addTo(map);
  }

  // Tiles, and the line that says that they are missing

  let tileLayers = [];
  let tilesMissing = false;
  let tilesCame = false; // since they were last asked for
  let retryTimer = 0;
  let patienceTimer = 0;

  function showNote() {
    const text = provider.needs ? provider.needs[language]
      : tilesMissing ? TEXTS[language].unreachable : "";
    note.textContent = text;
    note.hidden = text === "";
  }

  function setTilesMissing(missing) {
    clearTimeout(patienceTimer);
    patienceTimer = 0;
    if (missing && retryTimer === 0)
      retryTimer = setTimeout(retryTiles, RETRY);
    if (!missing) {
      clearTimeout(retryTimer);
      retryTimer = 0;
    }
    if (missing !== tilesMissing) {
      tilesMissing = missing;
      showNote();
    }
  }

  function retryTiles() {
    retryTimer = 0;
    for (const one of tileLayers)
      one.redraw();
  }

  function tilesAsked() {
    tilesCame = false;
    if (patienceTimer === 0)
      patienceTimer = setTimeout(() => setTilesMissing(!tilesCame), PATIENCE);
  }

  function tileCame() {
    tilesCame = true;
    setTilesMissing(false);
  }

  function tileFailed() {
    // One tile in many may be missing at the provider.
    if (!tilesCame)
      setTilesMissing(true);
  }

  function showTiles() {
    for (const one of tileLayers)
      one.remove();
    tileLayers = provider.layers(language).map((url) =>
      L.tileLayer(url, { subdomains: provider.subdomains, maxZoom: CLOSEST })
        .on("loading", tilesAsked)
        .on("tileload", tileCame)
        .on("tileerror", tileFailed)
        .addTo(map));
  }

  window.addEventListener("online", retryTiles);

  // Scripts and the pause that ends their burst

  const packets = new Map(); // id -> { kind, chunks }
  const figures = new Map(); // id -> figure, in the order in which they came
  let burstTimer = 0;
  let lastScript = 0;
  let viewWanted = false;

  function scriptCame() {
    lastScript = performance.now();
    if (burstTimer === 0)
      burstTimer = setTimeout(endBurst, PAUSE);
  }

  function endBurst() {
    const rest = lastScript + PAUSE - performance.now();
    // A map without a size waits until it has one. One that is being magnified
    // would end where that leads, whatever view is set meanwhile.
    if (rest > 0 || map.getSize().x === 0 || map.getSize().y === 0 || map._animatingZoom) {
      burstTimer = setTimeout(endBurst, Math.max(rest, PAUSE));
      return;
    }
    burstTimer = 0;
    if (viewWanted && figures.size > 0)
      setView();
    viewWanted = false;
    layer.show([...figures.values()]);
  }

  function setView() {
    const box = { west: Infinity, north: Infinity, east: -Infinity, south: -Infinity };
    for (const figure of figures.values()) {
      box.west = Math.min(box.west, figure.box.west);
      box.north = Math.min(box.north, figure.box.north);
      box.east = Math.max(box.east, figure.box.east);
      box.south = Math.max(box.south, figure.box.south);
    }
    const corner = (x, y) => Figures.fromWorld(x, y).reverse();
    map.fitBounds([corner(box.west, box.south), corner(box.east, box.north)],
      { padding: [PADDING, PADDING], maxZoom: CLOSEST_BY_ITSELF, animate: false });
  }

  /** Removes every drawn figure, and what was begun and not finished. */
  function clearMap() {
    packets.clear();
    figures.clear();
    viewWanted = false;
    scriptCame();
  }

  /**
   * Sets the language of all words.
   * @param {number} number 0 Chinese, any other English
   */
  function changelanguage(number) {
    if (typeof number !== "number" || Number.isNaN(number))
      return;
    const wanted = number === 0 ? "zh" : "en";
    if (wanted === language)
      return; // the tiles on the screen stay
    language = wanted;
    try {
      sessionStorage.setItem(LANGUAGE_KEY, language);
    } catch (error) {
      console.warn("no session storage:", error.message);
    }
    speak();
  }

  function speak() {
    document.documentElement.lang = language;
    document.title = provider.title[language];
    showControls();
    showTiles();
    showNote();
  }

  /**
   * Starts a figure.
   * @param {string} id
   * @param {number} [kind] 1 area, 2 line, 3 waypoint; a line if left out
   */
  function beginLocatedCityPacket(id, kind) {
    packets.set(String(id), { kind: Figures.kindOf(kind), chunks: [] });
    scriptCame();
  }

  /**
   * Adds numbers to a figure that was begun.
   * @param {string} id
   * @param {Array<number>} numbers longitude, latitude, longitude, ... in degrees, WGS-84
   */
  function appendLocatedCityPacket(id, numbers) {
    const packet = packets.get(String(id));
    if (packet === undefined || !Array.isArray(numbers))
      return;
    packet.chunks.push(numbers);
    scriptCame();
  }

  /**
   * Draws a figure that was begun, in place of one of the same identifier, and
   * brings all that is drawn into view.
   * @param {string} id
   */
  function finishLocatedCityPacket(id) {
    const packet = packets.get(String(id));
    if (packet === undefined)
      return;
    packets.delete(String(id));
    const figure = Figures.make(String(id), packet.kind, packet.chunks, provider.place);
    if (figure !== null) {
      figures.set(figure.id, figure);
      viewWanted = true;
    }
    scriptCame();
  }

  /**
   * Removes the drawn figures of this kind and exactly these numbers.
   * @param {number} kind as in beginLocatedCityPacket
   * @param {...number} numbers longitude, latitude, longitude, ... in degrees, WGS-84
   */
  function deleteDrawnPolygons(kind, ...numbers) {
    const wanted = Figures.make("", Figures.kindOf(kind), [numbers], provider.place);
    if (wanted === null)
      return;
    for (const [id, figure] of figures) {
      if (figure.kind === wanted.kind && figure.measured.length === wanted.measured.length &&
          figure.measured.every((value, at) => value === wanted.measured[at]))
        figures.delete(id);
    }
    scriptCame();
  }

  // Not to be replaced, nor stopped, by what comes with the numbers of an
  // imported file.
  for (const one of [clearMap, changelanguage, beginLocatedCityPacket, appendLocatedCityPacket,
                     finishLocatedCityPacket, deleteDrawnPolygons]) {
    const value = (...words) => {
      try {
        one(...words);
      } catch (error) {
        console.warn(`${one.name}: ${error instanceof Error ? error.message : "not understood"}`);
      }
    };
    Object.defineProperty(window, one.name, { value, writable: false, configurable: false });
  }

  speak();

  return Object.freeze({ map, layer, figures, packets, provider });
})();

if (typeof qt !== "undefined")
  new QWebChannel(qt.webChannelTransport, (channel) => { window.bridge = channel.objects.bridge_name; });
