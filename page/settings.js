// The present values of all attributes, and whoever wants to know of a change.

/** @typedef {import('./attributes.js').Attribute} Attribute */

export class Settings extends EventTarget {
  /** @param {Attribute[]} attributes */
  constructor(attributes) {
    super();
    this.attributes = attributes;
    /** By index; one value, of a list two. */
    this.values = attributes.map((a) => [...a.default]);
  }

  /**
   * In range. Sends 'change', with the index as its detail, when a value is another.
   * @param {number} index @param {number[]} values
   */
  set(index, values) {
    if (values.every((v, i) => v === this.values[index][i])) return;
    this.values[index] = [...values];
    this.dispatchEvent(new CustomEvent('change', { detail: index }));
  }

  /** @param {number[][]} values */
  setAll(values) {
    values.forEach((v, i) => this.set(i, v));
  }

  setDefaults() {
    this.setAll(this.attributes.map((a) => a.default));
  }

  /** Indices of the attributes that are not at their default. */
  changed() {
    return this.attributes.flatMap((a, i) =>
      a.default.every((v, e) => v === this.values[i][e]) ? [] : [i],
    );
  }

  /** @param {(index: number) => void} listener */
  onChange(listener) {
    this.addEventListener('change', (event) =>
      listener(/** @type {CustomEvent<number>} */ (event).detail),
    );
  }
}
