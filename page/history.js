// The last ten seconds of what the displays draw, one entry a reading, without allocating.

export const historySeconds = 10;
const capacity = 2048; // readings; 10 s at up to 200 a second

export class History {
  constructor() {
    this.times = new Float64Array(capacity).fill(-Infinity); // s
    /** dB; input left, right, output left, right. */
    this.levels = [0, 1, 2, 3].map(() => new Float32Array(capacity));
    /** s; left, right. */
    this.delays = [0, 1].map(() => new Float32Array(capacity));
    this.next = 0;
  }

  /** @param {number} time s @param {number[]} levels dB @param {number[]} delays s */
  add(time, levels, delays) {
    this.times[this.next] = time;
    for (let i = 0; i < 4; ++i) this.levels[i][this.next] = levels[i];
    for (let i = 0; i < 2; ++i) this.delays[i][this.next] = delays[i];
    this.next = (this.next + 1) % capacity;
  }

  /**
   * The readings of the last ten seconds, the oldest first.
   * @param {number} now s @param {(index: number, age: number) => void} visit age in s
   */
  visit(now, visit) {
    for (let i = 0; i < capacity; ++i) {
      const index = (this.next + i) % capacity;
      const age = now - this.times[index];
      if (age <= historySeconds && age >= 0) visit(index, age);
    }
  }
}
