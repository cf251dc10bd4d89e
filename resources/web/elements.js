// What every part of the page uses: elements, names, and the time that the widgets see.

export const element = (id) => document.getElementById(id);

export function make(name, properties = {}, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}

export function pictureScale() {
  return Math.min(3, Math.max(1, Math.ceil(window.devicePixelRatio || 1)));
}

export function ago(instant, now) {
  const seconds = Math.round((now - Date.parse(instant)) / 1000);
  const size = Math.abs(seconds);
  const text = size < 90 ? `${size} s` : size < 5400 ? `${Math.round(size / 60)} min` : `${Math.round(size / 3600)} h`;
  return seconds >= 0 ? `${text} ago` : `in ${text}`;
}

/** A widget or a choice of the gallery: "Perch, small". */
export const nameOf = (displayName, family) => `${displayName}, ${family.slice(6).toLowerCase()}`;

// A widget's picture within the outline that it has on the home screen: a path that the host sends.
export const outlined = (style, outline) => { style.clipPath = `path("${outline}")`; };

// The widgets' clock. It runs on between two states of the host, which tell the time that it shows.
export const clock = {
  heard(state) { this.state = state; this.at = performance.now(); },
  now() { return Date.parse(this.state.now) + (performance.now() - this.at) * this.state.rate; },
};
