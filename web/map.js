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
const VelmoMap = ((L) => {
  const PAUSE = 40; // milliseconds without a script that end a burst
  const CLOSEST = 18; // zoom of the most that the providers have
  const CLOSEST_TO_A_PLACE = 17; // zoom that leaves something to see around a single place
  const PADDING = 40; // pixels kept free around the figures
  const START = { centre: [35.5, 104], zoom: 4 }; // latitude, longitude: all of China
  const RETRY = 10000; // milliseconds until tiles are asked for again
  const LET_GO = 50; // milliseconds in which the engine gives up a request
  const PATIENCE = 8000; // milliseconds without any tile after which they count as missing

  const TEXTS = {
    zh: {
      unreachable: "无法获取地图瓦片，请检查网络连接",
      unreadable: "部分坐标无法读取，图形不完整",
      zoomIn: "放大", zoomOut: "缩小", metres: "米", kilometres: "公里",
    },
    en: {
      unreachable: "Map tiles cannot be reached. Check the network connection.",
      unreadable: "Some coordinates cannot be read. A figure is not complete.",
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
  new Graticule(provider.placing, { renderer: L.canvas({ pane: "graticule", padding: 0.25 }) }).addTo(map);
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
  const absentTiles = new Set(); // images asked for that have not come, in the order of asking
  let tilesMissing = false;
  let tilesCame = false; // since they were last asked for
  let retryTimer = 0;
  let patienceTimer = 0;
  let unreadable = false; // some of what is drawn

  function showNote() {
    const texts = TEXTS[language];
    note.textContent = [
      provider.needs ? provider.needs[language] : tilesMissing ? texts.unreachable : "",
      unreadable ? texts.unreadable : "",
    ].filter((line) => line !== "").join("\n");
    note.hidden = note.textContent === "";
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
      if (!missing)
        [...absentTiles].forEach(askAgain);
    }
  }

  // Those on the screen are left alone. One that is still awaited must be let go
  // first: the engine would only join the second wait to the first.
  function askAgain(tile) {
    absentTiles.delete(tile);
    if (!tile.isConnected)
      return;
    absentTiles.add(tile);
    const url = tile.src;
    tile.removeAttribute("src");
    setTimeout(() => {
      if (tile.isConnected)
        tile.src = url;
    }, LET_GO);
  }

  /** Asks for one tile. When it comes, so do the others. */
  function retryTiles() {
    clearTimeout(retryTimer);
    retryTimer = 0;
    if (!tilesMissing)
      return;
    retryTimer = setTimeout(retryTiles, RETRY);
    tilesCame = false;
    const tile = [...absentTiles].find((one) => one.isConnected);
    if (tile !== undefined)
      askAgain(tile);
    else
      setTilesMissing(false); // whatever was missing is out of view
  }

  function tilesAsked() {
    tilesCame = false;
    if (patienceTimer === 0)
      patienceTimer = setTimeout(() => setTilesMissing(!tilesCame), PATIENCE);
  }

  function tileCame({ tile }) {
    absentTiles.delete(tile);
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
        .on("tileloadstart", ({ tile }) => absentTiles.add(tile))
        .on("tileload", tileCame)
        .on("tileerror", tileFailed)
        .on("tileunload", ({ tile }) => absentTiles.delete(tile))
        .addTo(map));
  }

  window.addEventListener("online", retryTiles);

  // Scripts and the pause that ends their burst

  const packets = new Map(); // id -> { kind, chunks }
  const figures = new Map(); // id -> figure, in the order in which they came
  let burstTimer = 0;
  let lastScript = 0;
  let viewWanted = false;
  let moves = 0; // of the view
  map.on("moveend", () => ++moves);

  // A packet that is no script, as one with a number such as 045.7, is lost, and
  // the figure joins what lies around it. All that can be done is to say so.
  window.addEventListener("error", () => {
    if (packets.size > 0)
      setUnreadable(true);
  });

  function setUnreadable(some) {
    unreadable = some;
    showNote();
  }

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
    const extended = box.west < box.east || box.north < box.south;
    map.fitBounds([corner(box.west, box.south), corner(box.east, box.north)],
      { padding: [PADDING, PADDING], maxZoom: extended ? CLOSEST : CLOSEST_TO_A_PLACE, animate: false });
  }

  /** Removes every drawn figure, and what was begun and not finished. */
  function clearMap() {
    packets.clear();
    figures.clear();
    viewWanted = false;
    setUnreadable(false);
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
    const figure = Figures.make(String(id), packet.kind, packet.chunks, provider.placing);
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
    const wanted = Figures.make("", Figures.kindOf(kind), [numbers], provider.placing);
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

  // To look at the page from outside: copies, and moves of the view.
  return Object.freeze({
    provider,
    figures: () => [...figures.values()].map(({ id, kind, measured, world }) =>
      ({ id, kind, measured: [...measured], placed: Figures.allFromWorld(world) })),
    drawn: () => layer.drawn(),
    waiting: () => packets.size,
    zoom: () => map.getZoom(),
    moves: () => moves,
    pixelOf: (longitude, latitude) => {
      const { x, y } = map.latLngToContainerPoint([latitude, longitude]);
      return [x, y];
    },
    show: (longitude, latitude, zoom) => void map.setView([latitude, longitude], zoom, { animate: false }),
    zoomTo: (zoom) => void map.setZoom(zoom, { animate: false }),
    pan: (x, y) => void map.panBy([x, y], { animate: false }),
  });
})(window.L);
// Nothing but the map has to do with what draws it.
delete window.L;

if (typeof qt !== "undefined")
  new QWebChannel(qt.webChannelTransport, (channel) => { window.bridge = channel.objects.bridge_name; });
