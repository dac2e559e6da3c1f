// What the three pages share: the functions that the program runs in them.
// Figures are not drawn yet; the page says so.
"use strict";

const texts = {
  zh: "地图将随后续版本提供。测量数据已在左侧表格中。",
  en: "The map comes with a later version. The measurements are in the tables on the left.",
};

function changelanguage(language) {
  const code = language === 0 ? "zh" : "en";
  document.documentElement.lang = code;
  document.getElementById("provider").textContent = document.body.dataset[code];
  document.getElementById("text").textContent = texts[code];
}

function clearMap() {}
function beginLocatedCityPacket(id, kind) {}
function appendLocatedCityPacket(id, numbers) {}
function finishLocatedCityPacket(id) {}
function deleteDrawnPolygons(kind, ...numbers) {}

new QWebChannel(qt.webChannelTransport, (channel) => { window.bridge = channel.objects.bridge_name; });
changelanguage(0);
