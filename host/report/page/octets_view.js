// The octets of a message, with the selected bits marked.

const OCTETS_AT_ONCE = 4096;
const OCTETS_A_LINE = 16;
const FIELDS_AT_ONCE = 4;

class OctetsView {
  #cells = [];
  #hits = [];

  /** onSelect(octet): an octet was clicked. */
  constructor(octets, onSelect) {
    this.octets = octets;
    this.grid = element("div", {class: "octets code", id: "octets"});
    this.bits = element("div", {class: "bits code", id: "bits", role: "status"},
      element("span", {class: "mark"}, "Select a field of the dump, or an octet."));
    this.#add(OCTETS_AT_ONCE);
    this.grid.addEventListener("click", (event) => {
      const octet = this.#cells.indexOf(event.target);
      if (octet >= 0) onSelect(octet);
    });
  }

  elements() {
    return [element("div", {class: "section"}, element("h3", {}, "Octets"),
      element("span", {class: "mark"}, String(this.octets.length))), this.bits, this.grid];
  }

  /** Marks the bits of all fields, and writes those of `own`. */
  show(fields, own) {
    this.#highlight(fields);
    const shown = own.length > 0 ? own : fields;
    const left = shown.length - FIELDS_AT_ONCE;
    this.bits.replaceChildren(...shown.slice(0, FIELDS_AT_ONCE).map((f) => this.#drawField(f)),
      shown.length === 0 ? "No bits of its own." : "",
      left > 0 ? `and ${counted(left, "field")} more` : "");
    const first = this.#cells[shown[0]?.bit >> 3];
    if (first) reveal(this.grid, first);
  }

  /** Marks the place where decoding stopped, and says what was read there. */
  showFailure({bit, what}) {
    const cell = this.#cells[Math.min(bit >> 3, this.#cells.length - 1)];
    if (!cell) return;
    cell.classList.add("failed");
    cell.title = `Decoding stopped at bit ${bit}`;
    this.bits.replaceChildren(`Decoding stopped at bit ${bit}, reading ${what}.`);
  }

  #add(limit) {
    const end = Math.min(this.octets.length, limit);
    for (let at = this.#cells.length; at < end; at += OCTETS_A_LINE) {
      const line = [...this.octets.subarray(at, Math.min(at + OCTETS_A_LINE, end))];
      const cells = line.map((octet) => element("span", {}, octet.toString(16).padStart(2, "0")));
      this.#cells.push(...cells);
      const text = line.map((o) => (o > 31 && o < 127 ? String.fromCharCode(o) : "·")).join("");
      this.grid.append(element("div", {},
        element("span", {class: "offset"}, at.toString(16).padStart(4, "0")),
        element("span", {class: "cells"}, cells), element("span", {class: "ascii"}, text)));
    }
    if (end === this.octets.length) return;
    const more = element("button", {type: "button"}, `All ${this.octets.length} octets`);
    more.addEventListener("click", () => {
      more.remove();
      this.#add(this.octets.length);
    });
    this.grid.append(more);
  }

  #highlight(fields) {
    for (const cell of this.#hits) cell.classList.remove("hit");
    this.#hits = [];
    const spans = new Map();  // of an octet: its first bit, and the one after its last
    for (const field of fields) {
      for (const {octet, first, end} of octetsIn(field)) {
        const span = spans.get(octet) ?? [8, 0];
        spans.set(octet, [Math.min(span[0], first), Math.max(span[1], end)]);
      }
    }
    for (const [octet, [first, end]] of spans) {
      const cell = this.#cells[octet];
      if (!cell) continue;
      cell.classList.add("hit");
      cell.style.setProperty("--first", `${first * 12.5}%`);
      cell.style.setProperty("--end", `${end * 12.5}%`);
      this.#hits.push(cell);
    }
  }

  /** "ConsUnsigned, 4 bits from 27: 00001010", the field's bits marked. */
  #drawField(field) {
    const row = element("div", {},
      element("span", {class: "mark"},
        `${field.what}, ${counted(field.count, "bit")} from ${field.bit}: `));
    const octets = octetsIn(field);
    for (const {octet, first, end} of octets.slice(0, 4)) {
      const digits = this.octets[octet]?.toString(2).padStart(8, "0") ?? "";
      append(row, [element("span", {class: "other"}, digits.slice(0, first)),
        element("b", {}, digits.slice(first, end)),
        element("span", {class: "other"}, digits.slice(end)), " "]);
    }
    return append(row, [octets.length > 4 ? "…" : ""]);
  }
}

/** The octets in which a field has bits; of each, its first bit and the one after its last. */
function octetsIn({bit, count}) {
  const octets = [];
  for (let octet = bit >> 3; octet * 8 < bit + count; ++octet)
    octets.push({octet, first: Math.max(0, bit - octet * 8),
      end: Math.min(8, bit + count - octet * 8)});
  return octets;
}
