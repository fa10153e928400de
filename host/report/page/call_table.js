// The list of calls or of endpoints, which can be sorted and searched.

const GOOD_STATES = ["connected", "released", "registered"];
const BAD_STATES = ["failed", "rejected"];

function stateMark(state) {
  const kind = GOOD_STATES.includes(state) ? "good" : BAD_STATES.includes(state) ? "bad" : "open";
  return element("span", {class: `state ${kind}`}, state);
}

/** A number or an alias, and the host below it. */
function party(name, host) {
  return [element("span", {class: "party"}, name || "–"), element("span", {class: "host"}, host)];
}

function warned(count, kind) {
  return count > 0 ? element("span", {class: kind}, count) : element("span", {class: "none"}, 0);
}

// key: the value by which a column is sorted; cell: what it shows.
const CALL_COLUMNS = [
  {title: "#", width: "4rem", key: (c) => c.number, cell: (c) => c.number},
  {title: "Start", width: "7.5rem", key: (c) => c.start, cell: (c) => timeOfDay(c.start)},
  {title: "Duration", width: "5.5rem", key: (c) => c.duration, cell: (c) => duration(c.duration)},
  {title: "From", width: "minmax(7rem, 1fr)", key: (c) => c.from,
    cell: (c) => party(c.from, c.fromHost)},
  {title: "To", width: "minmax(7rem, 1fr)", key: (c) => c.to, cell: (c) => party(c.to, c.toHost)},
  {title: "State", width: "6.5rem", key: (c) => c.state, cell: (c) => stateMark(c.state)},
  {title: "Why", width: "minmax(9rem, 1.5fr)", key: (c) => c.why, cell: (c) => c.why},
  {title: "Codecs", width: "minmax(6rem, 1fr)", key: (c) => c.codecs.join(" "),
    cell: (c) => c.codecs.join(", ")},
  {title: "Messages", width: "5.5rem", key: (c) => c.messages, cell: (c) => c.messages},
  {title: "Refused", width: "5rem", key: (c) => c.refused, cell: (c) => warned(c.refused, "bad")},
  {title: "Losses", width: "4.5rem", key: (c) => c.losses, cell: (c) => warned(c.losses, "loss")},
];
const ENDPOINT_COLUMNS = [
  {title: "Host", width: "minmax(8rem, 1fr)", key: (e) => e.host, cell: (e) => e.host},
  {title: "Alias", width: "minmax(8rem, 1fr)", key: (e) => e.alias, cell: (e) => e.alias},
  {title: "Gatekeeper", width: "minmax(8rem, 1fr)", key: (e) => e.gatekeeper ?? "",
    cell: (e) => e.gatekeeper},
  {title: "State", width: "7rem", key: (e) => e.state, cell: (e) => stateMark(e.state)},
  {title: "Why", width: "minmax(9rem, 1.5fr)", key: (e) => e.why, cell: (e) => e.why},
  {title: "First", width: "7.5rem", key: (e) => e.start, cell: (e) => timeOfDay(e.start)},
  {title: "Last", width: "7.5rem", key: (e) => e.end, cell: (e) => timeOfDay(e.end)},
  {title: "Messages", width: "5.5rem", key: (e) => e.messages, cell: (e) => e.messages},
  {title: "Refused", width: "5rem", key: (e) => e.refused, cell: (e) => warned(e.refused, "bad")},
];
const TEXT_ORDER = new Intl.Collator("en", {numeric: true, sensitivity: "base"});

class CallTable {
  static ROW_HEIGHT = 38;
  #groups = [];
  #found = [];
  #texts = new Map();  // of a group, to be searched
  #sorted = {column: null, isDown: false};

  constructor(onSelect) {
    this.onSelect = onSelect;
    this.selected = null;
    this.table = byId("table");
    this.head = byId("table-head");
    this.rows = new VirtualRows(this.table, byId("table-rows"), CallTable.ROW_HEIGHT,
      (index) => this.#drawRow(index));
    this.table.addEventListener("keydown", (event) => {
      const page = Math.max(1, Math.floor(this.table.clientHeight / CallTable.ROW_HEIGHT) - 2);
      const index = moved(event.key, this.#found.indexOf(this.selected), this.#found.length, page);
      if (index === null) return;
      event.preventDefault();
      this.onSelect(this.#found[index]);
    });
    byId("search").addEventListener("input", () => this.#search());
  }

  show(groups, columns) {
    this.#groups = groups;
    this.columns = columns;
    this.#sorted = {column: null, isDown: false};
    this.table.hidden = groups.length === 0;
    const style = this.table.style;
    style.setProperty("--columns", columns.map((column) => column.width).join(" "));
    style.setProperty("--list-rows", Math.min(groups.length, 8));
    this.#drawHead();
    this.#search();
  }

  /** Moves by a number of rows: n and p. */
  step(by) {
    const index = this.#found.indexOf(this.selected) + by;
    if (this.#found[index]) this.onSelect(this.#found[index]);
  }

  select(group) {
    const before = this.rows.row(this.#found.indexOf(this.selected));
    this.selected = group;
    before?.setAttribute("aria-selected", "false");
    const index = this.#found.indexOf(group);
    if (index < 0) return;
    this.rows.reveal(index, this.head.offsetHeight);
    this.rows.row(index)?.setAttribute("aria-selected", "true");
    this.table.setAttribute("aria-activedescendant", `call-${index}`);
  }

  #search() {
    const wanted = byId("search").value.toLowerCase().split(/\s+/).filter(Boolean);
    this.#found = this.#groups.filter((group) => {
      const text = this.#textOf(group);
      return wanted.every((word) => text.includes(word));
    });
    byId("found").textContent =
      wanted.length > 0 ? `${this.#found.length.toLocaleString("en")} found` : "";
    this.#sort();
  }

  #textOf({key, record}) {
    let text = this.#texts.get(key);
    if (text === undefined) {
      text = Object.values(record).flat().join(" ").toLowerCase();
      this.#texts.set(key, text);
    }
    return text;
  }

  #sort() {
    const {column, isDown} = this.#sorted;
    if (column) {
      const sign = isDown ? -1 : 1;
      this.#found.sort((one, other) => {
        const [a, b] = [column.key(one.record), column.key(other.record)];
        return sign * (typeof a === "number" ? a - b : TEXT_ORDER.compare(a ?? "", b ?? ""));
      });
    }
    this.table.setAttribute("aria-rowcount", this.#found.length + 1);
    this.rows.reset(this.#found.length);
    this.select(this.selected);
  }

  #drawHead() {
    const cells = this.columns.map((column) => {
      const {column: by, isDown} = this.#sorted;
      const order = by !== column ? "none" : isDown ? "descending" : "ascending";
      const button = element("button", {type: "button", tabindex: "-1"}, column.title);
      button.addEventListener("click", () => this.#sortBy(column));
      return element("div", {role: "columnheader", "aria-sort": order}, button);
    });
    this.head.replaceChildren(...cells);
  }

  /** Sorts in ascending order, then descending, then in the original order. */
  #sortBy(column) {
    const {column: by, isDown} = this.#sorted;
    if (by !== column) this.#sorted = {column, isDown: false};
    else this.#sorted = {column: isDown ? null : column, isDown: !isDown};
    this.#drawHead();
    this.#search();
  }

  #drawRow(index) {
    const group = this.#found[index];
    const row = element("div", {
      class: "call", role: "row", id: `call-${index}`, "data-key": group.key,
      "aria-selected": String(group === this.selected), "aria-rowindex": index + 2,
    }, this.columns.map((column) => {
      const shown = column.cell(group.record);
      const title = typeof shown === "string" ? shown : null;
      return element("div", {role: "gridcell", title}, shown);
    }));
    row.addEventListener("click", () => this.onSelect(group));
    return row;
  }
}
