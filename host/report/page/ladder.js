// The ladder diagram: hosts as columns, an arrow for each message.

const FAMILIES = [
  {id: "ras", title: "RAS"},
  {id: "ui", title: "Call signalling"},
  {id: "h245", title: "H.245"},
  {id: "loss", title: "Losses"},
];
const STEP_HEIGHT = 40;
const TIME_WIDTH = 144;   // as in the style sheet
const LEAST_COLUMN = 92;
const EDGE = 80;          // beside the first and the last host
const MOST_HOSTS = 32;    // with more, the columns are source and destination
const WIDE_EDGE = 190;

const pen = document.createElement("canvas").getContext("2d");

function widthOf(text, font) {
  pen.font = font;
  return pen.measureText(text).width;
}

function familyOf(message) {
  return message.loss ? "loss" : message.family;
}

/** The text of an arrow: the name, and the summary of the message. */
function labelOf(message) {
  if (message.loss) return {name: "", rest: message.loss};
  const notes = [message.summary];
  if (message.transport === "tunnel") notes.push("(tunnelled)");
  if (message.transport === "fastStart") notes.push("(proposed in fastStart)");
  if (message.outcome === "refused") notes.push(`refused: ${message.reason}`);
  if (message.outcome === "bare") notes.push("(without a user-user element)");
  return {name: message.name, rest: notes.filter(Boolean).join(" ")};
}

class Ladder {
  #hidden = new Set();  // families
  #texts = new Map();   // of a message, to be searched

  constructor(onSelect) {
    this.onSelect = onSelect;
    this.group = null;
    this.steps = [];
    this.hosts = [];
    this.selected = null;
    this.diagram = byId("diagram");
    this.rows = new VirtualRows(this.diagram, byId("steps"), STEP_HEIGHT,
      (index) => this.#drawStep(index));
    new ResizeObserver(() => this.#layout(this.diagram.clientWidth)).observe(this.diagram);
    this.diagram.addEventListener("keydown", (event) => this.#key(event));
    byId("filter").addEventListener("input", () => this.#filter());
    this.#drawFamilies();
  }

  show(group) {
    this.group = group;
    this.selected = null;
    byId("filter").value = "";
    this.diagram.scrollTop = 0;
    this.#filter();
  }

  select(message) {
    const before = this.rows.row(this.steps.indexOf(this.selected));
    if (before) classes(before, {selected: false});
    this.selected = message;
    const index = this.steps.indexOf(message);
    if (index < 0) return;
    this.rows.reveal(index, byId("hosts").offsetHeight);
    const row = this.rows.row(index);
    if (row) classes(row, {selected: true});
    this.diagram.setAttribute("aria-activedescendant", `step-${index}`);
    this.#revealArrow(message);
  }

  /** Moves by a number of messages: j and k. */
  step(by) {
    const next = this.steps[this.steps.indexOf(this.selected) + by];
    if (next) this.onSelect(next);
  }

  /** Draws all steps for paper, in that width; with null, draws those in the window again. */
  print(width) {
    if (width) this.#layout(width);
    this.rows.whole = Boolean(width);
    if (!width) this.#layout(this.diagram.clientWidth);
  }

  #key(event) {
    const page = Math.max(1, Math.floor(this.diagram.clientHeight / STEP_HEIGHT) - 2);
    const index = moved(event.key, this.steps.indexOf(this.selected), this.steps.length, page);
    if (index === null) return;
    event.preventDefault();
    this.onSelect(this.steps[index]);
  }

  #filter() {
    const wanted = byId("filter").value.toLowerCase().split(/\s+/).filter(Boolean);
    this.steps = this.group.messages.filter((message) =>
      !this.#hidden.has(familyOf(message)) &&
      wanted.every((word) => this.#textOf(message).includes(word)));
    const [all, shown] = [this.group.messages.length, this.steps.length];
    byId("shown").textContent = shown < all ? `${shown} of ${all}` : "";
    this.hosts = [...new Set(this.steps.flatMap((m) => [hostOf(m.from), hostOf(m.to)]))];
    this.#layout(this.diagram.clientWidth);
  }

  #textOf(message) {
    let text = this.#texts.get(message);
    if (text === undefined) {
      const {name, rest} = labelOf(message);
      const facts = Object.values(message.facts ?? {}).flat();
      text = [message.frame, name, rest, message.from, message.to, ...facts].join(" ")
        .toLowerCase();
      this.#texts.set(message, text);
    }
    return text;
  }

  #layout(width) {
    if (!this.group || width === 0) return;
    this.hasPairs = this.hosts.length > MOST_HOSTS;
    this.edge = this.hasPairs ? WIDE_EDGE : EDGE;
    const columns = this.hasPairs ? ["source", "destination"] : this.hosts;
    const gaps = Math.max(1, columns.length - 1);
    const least = this.rows.isWhole ? 0 : LEAST_COLUMN;
    this.column = Math.max(least, (width - TIME_WIDTH - 2 * this.edge) / gaps);
    this.width = Math.round(2 * this.edge + this.column * gaps);
    this.places = new Map(columns.map((name, i) => [name, this.edge + i * this.column]));
    this.lifelines = [...this.places.values()].map((x) => `M${x} 0V${STEP_HEIGHT}`).join("");
    this.font = `12px ${getComputedStyle(document.body).fontFamily}`;
    this.diagram.style.setProperty("--width", `${this.width + TIME_WIDTH}px`);
    this.#drawHosts();
    this.rows.reset(this.steps.length);
    if (this.selected) this.select(this.selected);
  }

  #drawHosts() {
    const {record} = this.group;
    const roles = new Map();
    for (const {family, name, from} of this.steps)
      if (family === "ras" && /(Confirm|Reject)$/.test(name))
        roles.set(hostOf(from), "gatekeeper");
    if (record.toHost) roles.set(record.toHost, record.to);
    if (record.fromHost) roles.set(record.fromHost, record.from);
    const names = [...this.places.keys()];
    byId("hosts").replaceChildren(element("div", {class: "host-line"},
      element("div", {class: "time-title"}, "Time (UTC)", element("span", {}, "frame")),
      names.map((host) => {
        const made = element("div", {class: "host-name", title: host},
          element("strong", {}, host), element("span", {}, roles.get(host)));
        made.style.left = `${TIME_WIDTH + this.places.get(host)}px`;
        made.style.width = `${Math.min(this.column, 2 * this.edge) - 6}px`;
        return made;
      })));
  }

  #drawStep(index) {
    const message = this.steps[index];
    const before = index > 0 ? this.steps[index - 1] : null;
    const label = labelOf(message);
    const row = element("div", {
      class: `step ${familyOf(message)} ${message.outcome ?? ""} ${message.transport ?? ""}`,
      id: `step-${index}`, role: "option", "data-number": message.number,
      title: `${label.name} ${label.rest}`.trim(),
    }, this.#drawTime(message, before), this.#drawArrow(message, label));
    classes(row, {selected: message === this.selected});
    row.addEventListener("click", () => this.onSelect(message));
    return row;
  }

  #drawTime(message, before) {
    const since = before
      ? (microseconds(message.time) - microseconds(before.time)) / 1e6 : null;
    return element("div", {class: "time"},
      element("span", {class: "at"}, timeOfDay(message.time)),
      element("span", {class: "since"}, [message.frame || null,
        since !== null ? `+${duration(since)}` : null].filter(Boolean).join(" · ")));
  }

  /** The positions at which the arrow of a message begins and ends. */
  #ends(message) {
    const columns = this.hasPairs ? ["source", "destination"]
      : [hostOf(message.from), hostOf(message.to)];
    return columns.map((name) => this.places.get(name));
  }

  #drawArrow(message, label) {
    const [from, to] = this.#ends(message);
    const y = 27;
    const drawing = svg("svg", {width: this.width, height: STEP_HEIGHT, "aria-hidden": "true"},
      svg("path", {class: "lifelines", d: this.lifelines}));
    const sign = Math.sign(to - from) || 1;
    if (from === to) {
      drawing.append(svg("path", {class: "line", d: `M${from} ${y - 4}h34v8H${from + 8}`}),
        svg("path", {class: "head", d: `M${from + 1} ${y + 4}l9 -4.5v9z`}));
    } else {
      drawing.append(svg("path", {class: "line", d: `M${from} ${y}H${to - sign * 8}`}),
        svg("path", {class: "head", d: `M${to - sign} ${y}l${-sign * 9} -4.5v9z`}));
    }
    if (message.loss || message.outcome === "refused") {
      const x = from === to ? from + 34 : (from + to) / 2;
      drawing.append(svg("path", {class: "cross", d: `M${x - 5} ${y - 5}l10 10m0 -10l-10 10`}));
    }
    const port = this.hasPairs ? (endpoint) => endpoint : portOf;
    drawing.append(this.#drawPort(from, -sign, port(message.from), y),
      this.#drawPort(to, from === to ? -1 : sign, port(message.to), y),
      this.#drawLabel((from + to) / 2, label));
    return drawing;
  }

  #drawPort(x, side, port, y) {
    return svg("text", {class: "port", x: x + side * 5, y: y + 4,
      "text-anchor": side < 0 ? "end" : "start"}, port);
  }

  /** Draws a label in the middle of the arrow, but within the diagram. A longer label is cut. */
  #drawLabel(middle, {name, rest}) {
    const room = this.width - 8;
    const bold = `600 ${this.font}`;
    const nameWidth = widthOf(visible(name), bold) + (name ? 5 : 0);
    let shown = visible(rest);
    let width = nameWidth + widthOf(shown, this.font);
    if (width > room) {
      shown = `${shown.slice(0, Math.max(0, Math.floor((room - nameWidth) / 6.5)))}…`;
      width = nameWidth + widthOf(shown, this.font);
    }
    const x = Math.max(4, Math.min(middle - width / 2, this.width - width - 4));
    return svg("text", {class: "label", x, y: 17},
      svg("tspan", {class: "name"}, name),
      shown ? svg("tspan", name ? {dx: 5} : {}, shown) : null);
  }

  #drawFamilies() {
    byId("families").replaceChildren(...FAMILIES.map(({id, title}) => {
      const button = element("button", {type: "button", class: `family ${id}`,
        "aria-pressed": "true"}, title);
      button.addEventListener("click", () => {
        if (!this.#hidden.delete(id)) this.#hidden.add(id);
        button.setAttribute("aria-pressed", String(!this.#hidden.has(id)));
        this.#filter();
      });
      return button;
    }));
  }

  /** If the diagram is wider than its window, scrolls sideways to the arrow. */
  #revealArrow(message) {
    const {scrollLeft, clientWidth} = this.diagram;
    const ends = this.#ends(message);
    const [left, right] = [Math.min(...ends) - this.edge, Math.max(...ends) + this.edge];
    if (left < scrollLeft || right - left > clientWidth - TIME_WIDTH)
      this.diagram.scrollLeft = left;
    else if (right > scrollLeft + clientWidth - TIME_WIDTH)
      this.diagram.scrollLeft = right - clientWidth + TIME_WIDTH;
  }
}
