// Reads the peaks of a signal from its two taps: the greatest absolute value since the last reading,
// as far back as a tap reaches.

export class Levels {
  /** @param {AnalyserNode[]} taps left, right */
  constructor(taps) {
    this.taps = taps;
    this.samples = new Float32Array(taps[0].fftSize);
    this.lastTime = 0; // s, of the context
    this.peaks = [0, 0]; // linear; left, right
  }

  /**
   * Linear; left, right.
   * @param {number} now s, later than at the last reading: the context's own time may move on
   *   between two readings, and then stand still until the next ones
   */
  read(now) {
    const wanted = Math.ceil((now - this.lastTime) * this.taps[0].context.sampleRate);
    this.lastTime = now;
    const first = Math.max(this.samples.length - wanted, 0);
    for (let side = 0; side < 2; ++side) {
      this.taps[side].getFloatTimeDomainData(this.samples);
      let peak = 0;
      for (let i = first; i < this.samples.length; ++i) {
        const level = Math.abs(this.samples[i]);
        if (level > peak) peak = level;
      }
      this.peaks[side] = peak;
    }
    return this.peaks;
  }
}

export const lowestDb = -60; // of meters and displays

/** @param {number} gain */
export const decibels = (gain) => Math.max(20 * Math.log10(gain), lowestDb - 1);
