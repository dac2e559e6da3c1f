"use strict";

// The key with which the page asks 天地图 (Sky Map) for its tiles. A key for a
// browser ("浏览器端") is given free of charge to whoever registers with the
// provider; put it between the quotation marks. Without a key the page shows
// the figures on a plain background.
const TIANDITU_KEY = "";
