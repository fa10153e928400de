// Makes elements, and formats text. All text of a capture becomes text nodes.

/** Replaces characters that are invisible or that reorder text by their numbers. */
function visible(text) {
  return text.replace(/[\p{Cc}\p{Cf}\p{Cn}\p{Co}\p{Zl}\p{Zp}]/gu,
    (c) => `\\u{${c.codePointAt(0).toString(16)}}`);
}

function append(parent, children) {
  for (const child of children.flat(Infinity)) {
    if (child === null || child === undefined || child === "") continue;
    parent.append(child instanceof Node ? child : visible(String(child)));
  }
  return parent;
}

/** An HTML element: element("p", {class: "note", title: "..."}, "text", otherElement). */
function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  setAttributes(made, attributes);
  return append(made, children);
}

function svg(tag, attributes = {}, ...children) {
  const made = document.createElementNS("http://www.w3.org/2000/svg", tag);
  setAttributes(made, attributes);
  return append(made, children);
}

function setAttributes(target, attributes) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    target.setAttribute(name, name === "title" ? visible(String(value)) : value);
  }
}

function byId(id) {
  return document.getElementById(id);
}

/** Scrolls a holder, and nothing around it, as little as needed to show a child. */
function reveal(holder, child) {
  const [outer, inner] = [holder, child].map((shown) => shown.getBoundingClientRect());
  if (inner.top < outer.top) holder.scrollTop -= outer.top - inner.top;
  else if (inner.bottom > outer.bottom) holder.scrollTop += inner.bottom - outer.bottom;
}

/** Sets classes by conditions: classes(row, {selected: true}). */
function classes(target, conditions) {
  for (const [name, isSet] of Object.entries(conditions)) target.classList.toggle(name, isSet);
}

function counted(count, noun) {
  return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}

/** Microseconds since 1970, of "2026-11-22T05:11:39.000000Z". */
function microseconds(time) {
  return Date.parse(`${time.slice(0, 19)}Z`) * 1000 + Number(time.slice(20, 26));
}

function timeOfDay(time) {
  return time.slice(11, 23);
}

/** "0.075 s", "12.3 s", "4:05", "1:00:00" */
function duration(seconds) {
  if (seconds < 10) return `${seconds.toFixed(3)} s`;
  if (seconds < 60) return `${seconds.toFixed(1)} s`;
  const two = (number) => String(number).padStart(2, "0");
  const whole = Math.round(seconds);
  const minutes = Math.floor(whole / 60);
  if (minutes < 60) return `${minutes}:${two(whole % 60)}`;
  return `${Math.floor(minutes / 60)}:${two(minutes % 60)}:${two(whole % 60)}`;
}

/** "10.0.0.1" of "10.0.0.1:1720"; "2001:db8::1" of "[2001:db8::1]:1720". */
function hostOf(endpoint) {
  return endpoint.slice(0, endpoint.lastIndexOf(":")).replace(/^\[|\]$/g, "");
}

function portOf(endpoint) {
  return endpoint.slice(endpoint.lastIndexOf(":") + 1);
}

/** "cause text" of "causeText". */
function words(name) {
  return name.replace(/([a-z0-9])([A-Z])/g, "$1 $2").toLowerCase();
}
