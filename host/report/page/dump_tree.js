// The dump of a message as a tree that opens and closes.

const OPEN_AT_FIRST = 60;   // rows
const CHILDREN_AT_ONCE = 300;

class DumpTree {
  #rows = [];      // those on the page, each {node, chain, depth, element}
  #selected = -1;
  #isWhole = false;  // all lines of the dump

  constructor(holder, onSelect) {
    this.holder = holder;
    this.onSelect = onSelect;
    holder.addEventListener("keydown", (event) => this.#key(event));
  }

  show(root) {
    this.root = root;
    this.#openAtFirst();
    this.draw();
  }

  set whole(isWhole) {
    this.#isWhole = isWhole;
    if (!this.root) return;
    const selected = this.#rows[this.#selected]?.node;
    this.draw();
    if (selected) this.selectNode(selected);
  }

  openAll() {
    const open = (node) => {
      node.isOpen = true;
      node.children.forEach(open);
    };
    open(this.root);
    this.draw();
  }

  draw() {
    this.#rows = [];
    this.#selected = -1;
    this.#add(this.root, 0);
    this.holder.replaceChildren(...this.#rows.map((row, i) => this.#drawRow(row, i)));
  }

  /** Selects the row that shows a node, and opens the nodes around it. */
  selectNode(node) {
    for (let outer = node.parent; outer; outer = outer.parent) outer.isOpen = true;
    this.draw();
    for (let shown = node; shown; shown = shown.parent) {
      const index = this.#rows.findIndex(({chain}) => chain.includes(shown));
      if (index >= 0) return this.select(index);
    }
  }

  select(index) {
    const mark = (row, isSelected) => row?.element?.setAttribute("aria-selected", isSelected);
    mark(this.#rows[this.#selected], false);
    this.#selected = index;
    const row = this.#rows[index];
    mark(row, true);
    this.holder.setAttribute("aria-activedescendant", row.element.id);
    this.onSelect(row.chain);
    reveal(this.holder, row.element);
  }

  #children(node) {
    return this.#isWhole ? node.children : node.children.filter((child) => !child.isStructure);
  }

  /** A row for each child: an only child is written on the row of its parent. */
  #add(parent, depth) {
    for (const child of this.#children(parent).slice(0, parent.shown ?? CHILDREN_AT_ONCE)) {
      const chain = [child];
      while (!this.#isWhole && this.#isContinued(chain.at(-1)))
        chain.push(this.#children(chain.at(-1))[0]);
      const node = chain.at(-1);
      this.#rows.push({node, chain, depth, isBranch: this.#children(node).length > 0});
      if (node.isOpen) this.#add(node, depth + 1);
    }
    const left = this.#children(parent).length - (parent.shown ?? CHILDREN_AT_ONCE);
    if (left > 0) this.#rows.push({node: parent, chain: [parent], depth, left});
  }

  #isContinued(node) {
    return node.value === null && this.#children(node).length === 1;
  }

  #openAtFirst() {
    let budget = OPEN_AT_FIRST;
    let level = [this.root];
    while (level.length > 0) {
      const next = level.flatMap((node) => this.#children(node));
      budget -= next.length;
      if (budget < 0 && level[0] !== this.root) break;
      for (const node of level) node.isOpen = stringOf(node) === null;
      level = next;
    }
  }

  #drawRow(row, index) {
    const {node, depth, isBranch, left} = row;
    row.element = element("div", {
      class: "node", role: "treeitem", id: `node-${index}`, "aria-level": depth + 1,
      "aria-selected": "false", "aria-expanded": isBranch ? String(node.isOpen) : null,
      title: left ? null : node.path,
    }, left ? element("span", {class: "more"}, `${left} more`) : this.#drawContent(row));
    row.element.style.setProperty("--depth", depth);
    row.element.addEventListener("click", (event) => {
      if (left) return this.#showMore(node);
      this.select(index);
      if (isBranch && event.target.classList.contains("twist")) this.#toggle(index);
    });
    row.element.addEventListener("dblclick", () => {
      if (isBranch) this.#toggle(index);
    });
    return row.element;
  }

  /** The mark of a branch, the path, and the value or the number of children. */
  #drawContent({node, chain, isBranch}) {
    const mark = (text) => element("span", {class: "mark"}, text);
    const twist = node.isOpen ? "▾" : "▸";
    const content = [element("span", {class: "twist"}, isBranch ? twist : "")];
    for (const [i, step] of chain.entries()) {
      if (i > 0) content.push(mark(" › "));
      content.push(stepName(step));
    }
    const [value, kind] = shownValue(node);
    if (value !== null)
      content.push(mark(node.value !== null ? " = " : ": "),
        element("span", {class: `value ${kind}`}, value));
    else if (isBranch && !node.isOpen)
      content.push(mark(` (${this.#children(node).length})`));
    return content;
  }

  #showMore(node) {
    node.shown = (node.shown ?? CHILDREN_AT_ONCE) + CHILDREN_AT_ONCE;
    this.draw();
  }

  #toggle(index) {
    const {node} = this.#rows[index];
    node.isOpen = !node.isOpen;
    this.draw();
    this.select(index);
  }

  #key(event) {
    const row = this.#rows[this.#selected];
    const index = moved(event.key, this.#selected, this.#rows.length, 10);
    if (index !== null) this.#goTo(index);
    else if (event.key === "ArrowRight" && row?.isBranch) this.#goIn(row);
    else if (event.key === "ArrowLeft" && row) this.#goOut(row);
    else return;
    event.preventDefault();
  }

  #goTo(index) {
    const {node, left} = this.#rows[index];
    if (left) this.#showMore(node);
    else this.select(index);
  }

  #goIn({node}) {
    if (node.isOpen) this.select(this.#selected + 1);
    else this.#toggle(this.#selected);
  }

  #goOut({node, isBranch, depth}) {
    if (isBranch && node.isOpen) return this.#toggle(this.#selected);
    const outer = this.#rows.slice(0, this.#selected).findLastIndex((row) => row.depth < depth);
    if (outer >= 0) this.select(outer);
  }
}

/** Draws the name of a step: "setup" for "u@setup", "[2]" for "elem[2]". */
function stepName(node) {
  const alternative = node.name.startsWith("u@");
  const shown = alternative ? node.name.slice(2) : node.name.replace(/^elem(\[\d+\])$/, "$1");
  const kind = alternative ? "alternative" : node.isStructure ? "structure" : "component";
  return element("span", {class: kind}, shown);
}

/** "4 octets 0a 01 03 8f" of a string whose dump has a count and the data; null of others. */
function stringOf(node) {
  if (node.children.length !== 2 || node.children[1].name !== "data") return null;
  const [count, data] = node.children;
  const unit = {numocts: "octet", numbits: "bit", nchars: "character"}[count.name];
  if (!unit || data.value === null) return null;
  const pairs = data.value.slice(0, 128).replace(/(..)(?!$)/g, "$1 ");
  const rest = data.value.length > 128 ? " …" : "";
  const shown = unit === "character" ? quoted(data.value) : pairs + rest;
  return `${counted(count.value, unit)} ${shown}`.trim();
}

function quoted(text) {
  return `'${text}'`;
}

/** A value as text, and what kind of value it is. */
function shownValue(node) {
  const {value} = node;
  if (value === null) return [stringOf(node), "number"];
  if (typeof value === "number") return [String(value), "number"];
  if (typeof value === "boolean") return [value ? "TRUE" : "FALSE", "word"];
  const isPlain = node.name === "data" || /^\d+(\.\d+)+$/.test(value);
  return isPlain ? [value, "number"] : [quoted(value), "text"];
}
