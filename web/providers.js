"use strict";

/**
 * The map providers, under the names by which the pages ask for them.
 *
 * `layers` gives the tile addresses for a language ("zh" or "en"), the lowest
 * layer first; none means that there is nothing to ask the provider for.
 * `placing` gives, for a figure that begins at a WGS-84 longitude and latitude,
 * the function that turns each of its points into the system of the provider's
 * tiles, all in degrees. The start decides for the whole figure, so that one
 * across the border is not torn by the hundreds of metres of the shift.
 */
const Providers = (() => {
  // CGCS2000, of the one provider, and WGS-84 differ by centimetres.
  const as_measured = (longitude, latitude) => [longitude, latitude];
  const never_shifted = () => as_measured;
  const shifted_in_mainland = (longitude, latitude) =>
    Mainland.has(longitude, latitude) ? Gcj02.shifted : as_measured;

  const tianditu_key = typeof TIANDITU_KEY === "string" ? TIANDITU_KEY.trim() : "";
  const tianditu_layer = (name) =>
    `https://t{s}.tianditu.gov.cn/${name}_w/wmts?SERVICE=WMTS&REQUEST=GetTile&VERSION=1.0.0` +
    `&LAYER=${name}&STYLE=default&TILEMATRIXSET=w&FORMAT=tiles` +
    `&TILEMATRIX={z}&TILEROW={y}&TILECOL={x}&tk=${encodeURIComponent(tianditu_key)}`;

  const providers = {
    gaode: {
      title: { zh: "高德地图", en: "Gaode Map" },
      attribution: { zh: "© 高德地图", en: "© Gaode (AutoNavi)" },
      layers: (language) => [
        `https://webrd0{s}.is.autonavi.com/appmaptile?lang=${language === "zh" ? "zh_cn" : "en"}` +
        "&size=1&scale=1&style=8&x={x}&y={y}&z={z}",
      ],
      subdomains: "1234",
      placing: shifted_in_mainland,
    },
    google: {
      title: { zh: "谷歌地图", en: "Google Map" },
      attribution: { zh: "© 谷歌地图", en: "© Google" },
      layers: (language) => [
        `https://mt{s}.google.com/vt/lyrs=m&hl=${language === "zh" ? "zh-CN" : "en"}&gl=cn&x={x}&y={y}&z={z}`,
      ],
      subdomains: "0123",
      placing: shifted_in_mainland,
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
      placing: never_shifted,
    },
  };
  for (const provider of Object.values(providers))
    Object.freeze(provider);
  return Object.freeze(providers);
})();
