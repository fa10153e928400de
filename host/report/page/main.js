// The page: selection of a call and a message, permalinks, keys, printing.

class Page {
  constructor() {
    this.capture = new Capture();
    this.table = new CallTable((group) => this.select(group));
    this.ladder = new Ladder((message) => this.select(this.group, message));
    this.message = new MessageView(this.capture, () => this.select(this.group));
    this.group = null;
    this.drawTop();
    this.drawTabs();
    this.showTab("call");
  }

  async start() {
    byId("summary").replaceChildren("Reading …");
    await this.capture.read((part) => {
      byId("summary").replaceChildren(`Reading messages: ${Math.round(part * 100)} %`);
    });
    addEventListener("hashchange", () => this.followLink());
    addEventListener("keydown", (event) => this.key(event));
    addEventListener("beforeprint", () => this.ladder.print(690));
    addEventListener("afterprint", () => this.ladder.print(null));
    byId("show-keys").addEventListener("click", () => byId("keys").showModal());
    if (!this.followLink()) {
      const first = this.capture.calls[0] ?? this.capture.endpoints[0] ?? this.capture.all;
      this.select(first);
    }
    document.body.dataset.ready = "true";
  }

  drawTop() {
    const {files, calls, endpoints, messages, omitted} = this.capture.about;
    const names = files.map((file) => file === "-" ? "standard input" : file.split("/").pop())
      .join(", ");
    document.title = visible(`${names}: calls`);
    byId("title").replaceChildren(visible(names));
    byId("totals").replaceChildren([counted(calls.length, "call"),
      endpoints.length > 0 ? counted(endpoints.length, "endpoint") : null,
      counted(messages, "message"),
      omitted > 0 ? `${counted(omitted, "message")} left out` : null].filter(Boolean).join(" · "));
  }

  drawTabs() {
    const {calls, endpoints, all} = this.capture;
    this.tabs = new Map();
    const add = (kind, title, act) => {
      const tab = element("button", {type: "button", role: "tab", id: `tab-${kind}`}, title);
      tab.addEventListener("click", act);
      this.tabs.set(kind, tab);
      byId("tabs").append(tab);
    };
    add("call", `Calls ${calls.length.toLocaleString("en")}`, () => this.showTab("call"));
    if (endpoints.length > 0)
      add("endpoint", `Outside calls ${endpoints.length}`, () => this.showTab("endpoint"));
    add("all", "All messages", () => this.select(all));
  }

  showTab(kind) {
    if (this.tab === kind) return;
    this.tab = kind;
    for (const [name, tab] of this.tabs) tab.setAttribute("aria-selected", String(name === kind));
    if (kind === "all") this.table.show([], []);
    else if (kind === "call") this.table.show(this.capture.calls, CALL_COLUMNS);
    else this.table.show(this.capture.endpoints, ENDPOINT_COLUMNS);
  }

  select(group, message) {
    if (group !== this.group) {
      this.group = group;
      this.showTab(group.kind);
      this.table.select(group);
      drawSummary(group);
      this.ladder.show(group);
    }
    this.selected = message ?? null;
    this.message.show(group, this.selected);
    this.ladder.select(this.selected);
    const link = `#${group.key}${message ? `/${message.number}` : ""}`;
    if (link !== location.hash) history.replaceState(null, "", link);
  }

  /** Shows the call and the message of the address: "#2" or "#2/17". Returns whether they exist. */
  followLink() {
    const [key, number] = location.hash.slice(1).split("/");
    const group = this.capture.groups.get(key);
    if (!group) return false;
    this.select(group, group.messages.find((message) => message.number === Number(number)));
    return true;
  }

  key(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || byId("keys").open) return;
    const isTyping = event.target instanceof HTMLInputElement && event.target.type === "search";
    if (isTyping && event.key !== "Escape" && event.key !== "Enter") return;
    const actions = {
      "/": () => byId("search").select(),
      "f": () => byId("filter").select(),
      "n": () => this.table.step(1),
      "p": () => this.table.step(-1),
      "j": () => this.ladder.step(1),
      "k": () => this.ladder.step(-1),
      "a": () => this.message.toggleWhole(),
      "?": () => byId("keys").showModal(),
      "Enter": () => this.goIn(event.target),
      "Escape": () => this.goOut(event.target),
    };
    if (!(event.key in actions)) return;
    if (event.key === "Enter" && event.target instanceof HTMLButtonElement) return;
    actions[event.key]();
    if (event.key !== "Enter" || isTyping) event.preventDefault();
  }

  goIn(from) {
    if (from.id === "search") return byId("table").focus();
    if (from.id === "table" || from.id === "filter") {
      if (!this.selected) this.ladder.step(1);
      return byId("diagram").focus();
    }
    if (from.id === "diagram") this.message.focusTree();
  }

  goOut(from) {
    if (from.id === "diagram" && this.selected) return this.select(this.group);
    const outer = {tree: "diagram", filter: "diagram"}[from.id] ?? "table";
    byId(outer).focus();
  }
}

/** Draws the summary of a call or an endpoint, above its diagram. */
function drawSummary({kind, key, record}) {
  const summary = byId("summary");
  if (kind === "all") {
    summary.replaceChildren(element("h2", {}, "All messages"));
    return;
  }
  const isCall = kind === "call";
  const title = isCall
    ? [`Call ${key}`, " ", element("span", {class: "party"}, record.from || record.fromHost || "?"),
      element("span", {class: "mark"}, " → "),
      element("span", {class: "party"}, record.to || record.toHost || "?")]
    : [record.host, " ", element("span", {class: "party"}, record.alias)];
  const reason = record.why?.includes(record.reason) ? null : record.reason;
  const facts = isCall
    ? {start: record.start.replace("T", " ").replace("Z", ""), duration: duration(record.duration),
      codecs: record.codecs.join(", "), reason, refused: record.refused, losses: record.losses,
      identifier: record.call}
    : {gatekeeper: record.gatekeeper, identifier: record.identifier, refused: record.refused};
  summary.replaceChildren(
    element("h2", {}, title, " ", stateMark(record.state)),
    record.why ? element("p", {class: "why"}, record.why) : "",
    element("dl", {}, Object.entries(facts).filter(([, value]) => value)
      .map(([name, value]) => element("div", {}, element("dt", {}, name),
        element("dd", {}, value)))));
}

const page = new Page();
page.start().catch((error) => {
  byId("summary").replaceChildren(`This page cannot be shown: ${error.message}`);
  throw error;
});
