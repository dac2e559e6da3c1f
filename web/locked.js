"use strict";

/**
 * Closes the one road out that the page's policy leaves open. What an imported
 * file holds between its commas runs as script, and a call (WebRTC) would carry
 * words of its choice to any host. The calls are taken away here; a frame, even
 * an empty one, would bring them back, so no frame can be made: neither by name
 * nor, through the policy's trusted types, by text.
 */
(() => {
  for (const name of ["RTCPeerConnection", "webkitRTCPeerConnection", "WebTransport", "XSLTProcessor"])
    Reflect.deleteProperty(window, name);

  const FRAMES = /^(?:.*:)?(?:iframe|frame|frameset|object|embed|portal|fencedframe)$/i;
  for (const [name, place] of [["createElement", 0], ["createElementNS", 1]]) {
    const make = Document.prototype[name];
    const { apply } = Reflect;
    const test = FRAMES.test.bind(FRAMES);
    const value = function (...words) {
      words[place] = `${words[place]}`;
      if (test(words[place]))
        throw new TypeError("The map page has no frames.");
      return apply(make, this, words);
    };
    Object.defineProperty(Document.prototype, name, { value, writable: false, configurable: false });
  }

  // An element of the page's own making could be a frame by inheritance.
  Object.defineProperty(CustomElementRegistry.prototype, "define", {
    value: () => {
      throw new TypeError("The map page has no elements of its own.");
    },
    writable: false,
    configurable: false,
  });

  // Leaflet writes its controls as text with a span at most.
  if (window.trustedTypes) {
    const replace = Function.prototype.call.bind(String.prototype.replace);
    const includes = Function.prototype.call.bind(String.prototype.includes);
    window.trustedTypes.createPolicy("default", {
      createHTML: (text) => includes(replace(text, /<\/?span(?: [^<>]*)?>/g, ""), "<") ? null : text,
    });
  }
})();
