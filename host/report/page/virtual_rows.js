// A long list of rows of the same height. Only those in view are in the document.

class VirtualRows {
  #rows = new Map();  // by index
  #first = 0;
  #last = 0;
  #isScheduled = false;

  /** scroller: what scrolls; holder: its child that the rows are put into; draw(index): a row. */
  constructor(scroller, holder, rowHeight, draw) {
    Object.assign(this, {scroller, holder, rowHeight, draw, count: 0, isWhole: false});
    scroller.addEventListener("scroll", () => this.#schedule(), {passive: true});
    new ResizeObserver(() => this.#schedule()).observe(scroller);
  }

  /** Shows another list, of that many rows. */
  reset(count) {
    this.count = count;
    this.#rows.clear();
    this.holder.replaceChildren();
    this.holder.style.height = `${count * this.rowHeight}px`;
    this.update();
  }

  row(index) {
    return this.#rows.get(index);
  }

  /** Makes the rows in view, and removes the others. */
  update() {
    const {scroller, holder, rowHeight, count} = this;
    const top = scroller.scrollTop - holder.offsetTop;
    const spare = 8;
    this.#first = this.isWhole ? 0 : Math.max(0, Math.floor(top / rowHeight) - spare);
    this.#last = this.isWhole ? count
      : Math.min(count, Math.ceil((top + scroller.clientHeight) / rowHeight) + spare);
    for (const [index, row] of this.#rows) {
      if (index >= this.#first && index < this.#last) continue;
      row.remove();
      this.#rows.delete(index);
    }
    for (let index = this.#first; index < this.#last; ++index) {
      if (this.#rows.has(index)) continue;
      const row = this.draw(index);
      row.style.transform = `translateY(${index * rowHeight}px)`;
      this.#rows.set(index, row);
      holder.append(row);
    }
  }

  /** Scrolls as little as needed, below what sticks to the top. */
  reveal(index, stickyHeight) {
    const {scroller, holder, rowHeight} = this;
    const top = holder.offsetTop + index * rowHeight;
    if (top < scroller.scrollTop + stickyHeight) scroller.scrollTop = top - stickyHeight;
    else if (top + rowHeight > scroller.scrollTop + scroller.clientHeight)
      scroller.scrollTop = top + rowHeight - scroller.clientHeight;
    this.update();
  }

  /** Makes all rows, for a printer. */
  set whole(isWhole) {
    this.isWhole = isWhole;
    this.reset(this.count);
  }

  #schedule() {
    if (this.#isScheduled) return;
    this.#isScheduled = true;
    requestAnimationFrame(() => {
      this.#isScheduled = false;
      this.update();
    });
  }
}

/** The index to which a key leads in a list; null if it is another key. */
function moved(key, index, count, page) {
  const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page,
    Home: -count, End: count};
  if (!(key in steps) || count === 0) return null;
  return Math.min(count - 1, Math.max(0, index + steps[key]));
}
