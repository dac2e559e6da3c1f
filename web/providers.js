"use strict";

/**
 * The map providers, under the names by which the pages ask for them.
 *
 * `layers` gives the tile addresses for a language ("zh" or "en"), the lowest
 * layer first; none means that there is nothing to ask the provider for.
 * `place` turns WGS-84 longitude and latitude in degrees into those of the
 * provider's tiles.
 */
const Providers = (() => {
  const in_china_shifted = (longitude, latitude) =>
    Gcj02.applies(longitude, latitude) ? Gcj02.shifted(longitude, latitude) : [longitude, latitude];

  // CGCS2000 and WGS-84 differ by centimetres.
  const as_measured = (longitude, latitude) => [longitude, latitude];

  const tianditu_key = typeof TIANDITU_KEY === "string" ? TIANDITU_KEY.trim() : "";
  const tianditu_layer = (name) =>
    `https://t{s}.tianditu.gov.cn/${name}_w/wmts?SERVICE=WMTS&REQUEST=GetTile&VERSION=1.0.0` +
    `&LAYER=${name}&STYLE=default&TILEMATRIXSET=w&FORMAT=tiles` +
    `&TILEMATRIX={z}&TILEROW={y}&TILECOL={x}&tk=${encodeURIComponent(tianditu_key)}`;

  return Object.freeze({
    gaode: {
      title: { zh: "高德地图", en: "Gaode Map" },
      attribution: { zh: "© 高德地图", en: "© Gaode (AutoNavi)" },
      layers: () => [
        "https://webrd0{s}.is.autonavi.com/appmaptile?lang=zh_cn&size=1&scale=1&style=8&x={x}&y={y}&z={z}",
      ],
      subdomains: "1234",
      place: in_china_shifted,
    },
    google: {
      title: { zh: "谷歌地图", en: "Google Map" },
      attribution: { zh: "© 谷歌地图", en: "© Google" },
      layers: (language) => [
        `https://mt{s}.google.com/vt/lyrs=m&hl=${language === "zh" ? "zh-CN" : "en"}&gl=cn&x={x}&y={y}&z={z}`,
      ],
      subdomains: "0123",
      place: in_china_shifted,
    },
    tianditu: {
      title: { zh: "天地图", en: "Sky Map" },
      attribution: { zh: "© 天地图 国家地理信息公共服务平台", en: "© Tianditu, National Platform for Geospatial Information" },
      layers: (language) => tianditu_key === "" ? []
        : [tianditu_layer("vec"), tianditu_layer(language === "zh" ? "cva" : "eva")],
      needs: tianditu_key !== "" ? null : {
        zh: "天地图需要密钥，请填入 tianditu_key.js",
        en: "Sky Map needs a key in tianditu_key.js",
      },
      subdomains: "01234567",
      place: as_measured,
    },
  });
})();
