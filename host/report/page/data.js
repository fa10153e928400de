// What the page shows: the document's data blocks, which are compressed JSON.

/** The array that is compressed in a text; an empty one if there is no text. */
async function inflate(base64) {
  if (!base64) return [];
  const characters = atob(base64);
  const octets = new Uint8Array(characters.length);
  for (let i = 0; i < octets.length; ++i) octets[i] = characters.charCodeAt(i);
  const stream = new Blob([octets]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Response(stream).json();
}

/** The messages of a diagram: of a call, of one host outside calls, or all messages. */
class Group {
  constructor(key, kind, record) {
    this.key = key;  // "3" of a call, "e1" of an endpoint, "all": the first part of a permalink
    this.kind = kind;
    this.record = record;
    this.messages = [];  // in order of time; losses are among them
  }
}

class Capture {
  constructor() {
    this.about = JSON.parse(byId("report").textContent);
    this.blocks = [...document.querySelectorAll("script.block")]
      .map((block) => JSON.parse(block.textContent));
    this.messages = [];
    this.calls = this.about.calls.map((call) => new Group(String(call.number), "call", call));
    this.endpoints = this.about.endpoints
      .map((endpoint, i) => new Group(`e${i + 1}`, "endpoint", endpoint));
    this.all = new Group("all", "all", {});
    this.groups = new Map([...this.calls, ...this.endpoints, this.all].map((g) => [g.key, g]));
    this.detailsOfBlock = new Map();  // the blocks that were read last
  }

  /** Reads all messages, without their dumps. */
  async read(onProgress) {
    const endpoints = new Map(this.endpoints.map((group) => [group.record.host, group]));
    let next = inflate(this.blocks[0]?.messages);
    for (const [i, block] of this.blocks.entries()) {
      const messages = await next;
      next = inflate(this.blocks[i + 1]?.messages);
      for (const [at, message] of messages.entries()) {
        message.place = {block: i, at};
        this.put(message, endpoints);
      }
      block.messages = null;
      onProgress((i + 1) / this.blocks.length);
    }
  }

  put(message, endpoints) {
    this.messages.push(message);
    this.all.messages.push(message);
    const call = this.groups.get(String(message.callNumber));
    const group = call ?? endpoints.get(hostOf(message.from)) ?? endpoints.get(hostOf(message.to));
    group?.messages.push(message);
  }

  /** The octets, the dump and the fields of a message. */
  async details(message) {
    const {block, at} = message.place;
    if (!this.detailsOfBlock.has(block)) {
      if (this.detailsOfBlock.size >= 4)
        this.detailsOfBlock.delete(this.detailsOfBlock.keys().next().value);
      this.detailsOfBlock.set(block, inflate(this.blocks[block].details));
    }
    const packed = (await this.detailsOfBlock.get(block))[at];
    return {
      octets: Uint8Array.from(packed.octets.match(/../g) ?? [], (digits) => parseInt(digits, 16)),
      tree: readTree(packed),
    };
  }
}

/** Reads texts, stored without the beginning that each has in common with the one before. */
class SharedTexts {
  #text = "";
  next(shared, rest) {
    return this.#text = this.#text.slice(0, shared) + rest;
  }
}

/** One step of a path: a component, an alternative or an element, perhaps with a value. */
class TreeNode {
  children = [];
  value = null;
  fields = [];  // {bit, count, what}: of this step itself
  isOpen = false;
  #byName = new Map();

  constructor(name, parent) {
    this.name = name;
    this.parent = parent;
  }

  child(name) {
    let found = this.#byName.get(name);
    if (!found) {
      found = new TreeNode(name, this);
      this.#byName.set(name, found);
      this.children.push(found);
    }
    return found;
  }

  at(path) {
    return path.split(".").reduce((node, step) => node.child(step), this);
  }

  /** The bits of this step and of all steps in it. */
  allFields() {
    return this.fields.concat(...this.children.map((child) => child.allFields()));
  }

  get path() {
    return this.parent?.parent ? `${this.parent.path}.${this.name}` : this.name;
  }

  /** Whether the tree shows the value in another way: a tag, a count, the presence of components,
   *  or a count of 0 unknown additions. */
  get isStructure() {
    const hasSibling = (prefix) => this.parent.children.some((n) => n.name.startsWith(prefix));
    return this.name.startsWith("m@") || (this.name === "t" && hasSibling("u@")) ||
      (this.name === "n" && hasSibling("elem[")) ||
      (/^extElem\d+$/.test(this.name) && this.children[0]?.value === 0);
  }
}

/** Reads lines of a dump, [shared, rest of the path, value, ...], and fields of the message,
 *  [shared, rest of "path what", first bit, bits, ...]. The root has the field read last. */
function readTree({dump, fields}) {
  const root = new TreeNode("", null);
  let texts = new SharedTexts();
  for (let i = 0; i < dump.length; i += 3)
    root.at(texts.next(dump[i], dump[i + 1])).value = dump[i + 2];  // text, number or boolean
  texts = new SharedTexts();
  for (let i = 0; i < fields.length; i += 4) {
    const [path, what] = texts.next(fields[i], fields[i + 1]).split(" ");
    root.last = {bit: fields[i + 2], count: fields[i + 3], what};
    root.at(path).fields.push(root.last);
  }
  return root;
}
