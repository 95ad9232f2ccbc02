// The effect as a processor of Web Audio. Settings come as messages, which the browser delivers
// between two blocks: they pass through the same ramps and queue as in the object.
//
//   in:  {set: [attribute, values]}   {call: 'clear' | 'reset'}   {ask: true}   {watch: true}
//   out: State, the answer to ask
import { Effect } from './effect.js';

/**
 * What the page shows of the inside.
 * @typedef {object} State
 * @property {number[]} readDelay s; left, right
 * @property {number} gateGain linear
 * @property {number} duckGainDb
 * @property {number} settings messages that set something, since the start
 * @property {number} blocks since the start
 * @property {number} worstLag s; the most that a block came later than the earliest one did, since
 *   watch
 */

class VeskProcessor extends AudioWorkletProcessor {
  /** @param {{processorOptions: {module: WebAssembly.Module, values: number[][], seed?: number[]}}} o */
  constructor({ processorOptions: { module, values, seed } }) {
    super();
    this.effect = new Effect(module, sampleRate);
    this.effect.startWith(values);
    if (seed) this.effect.seed(seed[0], seed[1]);
    this.silence = new Float32Array(128);
    this.settings = 0;
    this.blocks = 0;
    this.watching = false; // the clock: asking for the time allocates
    this.leastLag = Infinity; // s, of the wall clock behind the frames played
    this.mostLag = -Infinity;
    this.port.onmessage = ({ data }) => this.receive(data);
  }

  /** @param {{set?: [number, number[]], call?: 'clear' | 'reset', ask?: boolean, watch?: boolean}} message */
  receive({ set, call, ask, watch }) {
    if (set) {
      this.effect.set(...set);
      ++this.settings;
    }
    if (call === 'clear') this.effect.clear();
    if (call === 'reset') this.effect.reset();
    if (watch) this.watching = true;
    if (ask) this.port.postMessage(this.state());
  }

  /** @returns {State} */
  state() {
    return {
      readDelay: [this.effect.readDelay(0), this.effect.readDelay(1)],
      gateGain: this.effect.gateGain(),
      duckGainDb: this.effect.duckGainDb(),
      settings: this.settings,
      blocks: this.blocks,
      worstLag: Math.max(this.mostLag - this.leastLag, 0),
    };
  }

  /**
   * @param {Float32Array[][]} inputs none or two channels
   * @param {Float32Array[][]} outputs two channels
   */
  process(inputs, outputs) {
    const output = outputs[0];
    const input = inputs[0];
    if (input.length === 2) {
      this.effect.process(input[0], input[1], output[0], output[1]);
    } else {
      // Allocates only should the browser ever change its block length.
      if (this.silence.length !== output[0].length)
        this.silence = new Float32Array(output[0].length);
      this.effect.process(this.silence, this.silence, output[0], output[1]);
    }
    if (this.watching) this.watchClock();
    ++this.blocks;
    return true; // the tail goes on without an input
  }

  watchClock() {
    const lag = Date.now() / 1000 - currentTime;
    if (lag < this.leastLag) this.leastLag = lag;
    if (lag > this.mostLag) this.mostLag = lag;
  }
}

registerProcessor('vesk', VeskProcessor);
