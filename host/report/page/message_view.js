// One message: its facts, its dump, its octets.

class MessageView {
  #request = 0;  // details are read later; those of an earlier message are ignored
  #isWhole = false;

  constructor(capture, onClose) {
    this.capture = capture;
    this.onClose = onClose;
    this.view = byId("message");
  }

  async show(group, message) {
    const request = ++this.#request;
    this.tree = null;
    if (!message) this.view.replaceChildren();
    classes(this.view.parentElement, {"has-message": Boolean(message)});
    if (!message) return;
    const {octets, tree} = await this.capture.details(message);
    if (request !== this.#request) return;
    this.root = tree;
    this.view.className = `message ${familyOf(message)} ${message.outcome ?? ""}`;
    this.octets = octets.length > 0
      ? new OctetsView(octets, (octet) => this.#selectOctet(octet)) : null;
    this.view.replaceChildren(drawMessageHead(group, message, this.onClose),
      drawFacts(group, message), ...this.#drawTree(), ...this.octets?.elements() ?? []);
    this.view.scrollTop = 0;
    if (message.outcome === "refused" && tree.last) this.octets?.showFailure(tree.last);
  }

  /** Switches between all lines of the dump and the main ones: key a. */
  toggleWhole() {
    this.#isWhole = !this.#isWhole;
    if (!this.tree) return;
    byId("whole").checked = this.#isWhole;
    this.tree.whole = this.#isWhole;
  }

  focusTree() {
    if (!this.tree) return;
    this.tree.holder.focus();
    if (!this.tree.holder.querySelector("[aria-selected=true]")) this.tree.select(0);
  }

  #drawTree() {
    if (this.root.children.length === 0) return [];
    const whole = element("input", {type: "checkbox", id: "whole"});
    whole.checked = this.#isWhole;
    whole.addEventListener("change", () => this.toggleWhole());
    const holder = element("div", {id: "tree", class: "tree", role: "tree", tabindex: "0",
      "aria-label": "Dump"});
    this.tree = new DumpTree(holder, (chain) => this.#select(chain));
    const openAll = element("button", {type: "button", id: "open-all"}, "Open all");
    openAll.addEventListener("click", () => this.tree.openAll());
    this.tree.whole = this.#isWhole;
    this.tree.show(this.root);
    return [element("div", {class: "section"}, element("h3", {}, "Dump"), openAll,
      element("label", {title: "Tags, counts and presence of components (a)"}, whole,
        " all lines")), holder];
  }

  #select(chain) {
    const hasBits = (field) => field.count > 0;
    this.octets?.show(chain[0].allFields().filter(hasBits),
      chain.flatMap((node) => node.fields).filter(hasBits));
  }

  /** Selects the smallest field that has bits in an octet. */
  #selectOctet(octet) {
    let best = null;
    const look = (node) => {
      for (const {bit, count} of node.fields) {
        const isHere = bit < octet * 8 + 8 && bit + count > octet * 8;
        if (isHere && (!best || count < best.count)) best = {node, count};
      }
      node.children.forEach(look);
    };
    look(this.root);
    if (best) this.tree.selectNode(best.node);
    else this.octets.show([], []);
  }
}

function drawMessageHead(group, message, onClose) {
  const family = FAMILIES.find(({id}) => id === familyOf(message)).title;
  const link = `#${group.key}/${message.number}`;
  const close = element("button", {type: "button", title: "Close (Esc)"}, "×");
  close.addEventListener("click", onClose);
  return element("header", {},
    element("p", {class: "kind"}, element("span", {class: "badge"}, family),
      [words(message.transport ?? ""), message.frame ? `frame ${message.frame}` : ""]
        .filter(Boolean).join(", "),
      element("a", {class: "permalink", href: link, title: "Link to this message"}, link), close),
    element("h2", {}, message.loss ?? message.name),
    message.summary ? element("p", {class: "what"}, message.summary) : null,
    message.outcome === "refused"
      ? element("p", {class: "refusal"}, `Refused: ${message.reason}`) : null);
}

function drawFacts(group, message) {
  const facts = [["time", message.time.replace("T", " ").replace("Z", " UTC")],
    ["way", [message.from, " → ", message.to]],
    ...Object.entries(message.facts ?? {}).map(([name, value]) =>
      [words(name), Array.isArray(value) ? value.join(", ") : String(value)])];
  if (message.call) facts.push(["call identifier", element("span", {class: "code"}, message.call)]);
  if (message.callNumber && group.kind !== "call") {
    const link = `#${message.callNumber}/${message.number}`;
    facts.push(["call", element("a", {href: link}, `call ${message.callNumber}`)]);
  }
  return element("dl", {class: "facts"},
    facts.map(([name, value]) => [element("dt", {}, name), element("dd", {}, value)]));
}
