// One instance of the effect in a WebAssembly module: in the audio worklet, in the render worker and
// under Node alike. Both channels always; nothing is allocated while it plays.

/**
 * The one system call that the C++ library makes: the draw of the random generator's start.
 * @param {() => WebAssembly.Memory} memory
 */
function systemCalls(memory) {
  return {
    /** @param {number} pointer @param {number} length bytes */
    random_get(pointer, length) {
      const bytes = new Uint8Array(memory().buffer, pointer, length);
      for (let i = 0; i < length; ++i) bytes[i] = Math.floor(Math.random() * 256);
      return 0;
    },
  };
}

export class Effect {
  /**
   * Throws RangeError for a rate that is not accepted.
   * @param {WebAssembly.Module} module
   * @param {number} rate Hz
   */
  constructor(module, rate) {
    /** @type {any} */
    let calls = null;
    const imports = { wasi_snapshot_preview1: systemCalls(() => calls.memory) };
    calls = new WebAssembly.Instance(module, imports).exports;
    calls._initialize();
    /** @private */ this.calls = calls;
    this.maxFrames = 0;
    /** Views of the module's memory; left, right. @private */
    this.in = [new Float64Array(), new Float64Array()];
    /** @private */ this.out = this.in;
    this.prepare(rate);
  }

  /**
   * Makes everything anew for a rate and keeps the values. Allocates.
   * @param {number} rate Hz
   */
  prepare(rate) {
    if (!this.calls.prepare(rate)) throw new RangeError(`the effect has no sample rate ${rate} Hz`);
    // The memory may have grown, which ends every view of it.
    const { memory } = this.calls;
    const frames = this.calls.max_frames();
    /** @param {number} pointer */
    const view = (pointer) => new Float64Array(memory.buffer, pointer, frames);
    this.maxFrames = frames;
    this.in = [0, 1].map((c) => view(this.calls.input_buffer(c)));
    this.out = [0, 1].map((c) => view(this.calls.output_buffer(c)));
  }

  /**
   * The state of the random generator, which is drawn otherwise.
   * @param {number} first @param {number} second 32 bits each, not both 0
   */
  seed(first, second) {
    this.calls.seed(first, second);
  }

  /**
   * An attribute by its index; a number ramps to its new value.
   * @param {number} attribute @param {ArrayLike<number>} values one, of a list one or two
   */
  set(attribute, values) {
    this.calls.set(attribute, values.length, values[0] ?? 0, values[1] ?? 0);
  }

  /**
   * The same without a ramp, before the first block.
   * @param {number} attribute @param {ArrayLike<number>} values
   */
  jumpTo(attribute, values) {
    this.calls.jump_to(attribute, values.length, values[0] ?? 0, values[1] ?? 0);
  }

  /**
   * Before the first block: all values without a ramp. They sound from the first sample, without a
   * fade or a glide there from the defaults.
   * @param {ArrayLike<number>[]} values of all attributes, in the order of their indices
   */
  startWith(values) {
    values.forEach((v, i) => this.jumpTo(i, v));
    this.calls.start();
  }

  clear() {
    this.calls.clear();
  }

  reset() {
    this.calls.reset();
  }

  /**
   * One block, one array a channel, of any length; outputs may be the inputs. Longer blocks than
   * maxFrames are played in several.
   * @param {Float32Array} inLeft @param {Float32Array} inRight
   * @param {Float32Array} outLeft @param {Float32Array} outRight
   */
  process(inLeft, inRight, outLeft, outRight) {
    const frames = outLeft.length;
    for (let begin = 0; begin < frames; begin += this.maxFrames) {
      const n = Math.min(frames - begin, this.maxFrames);
      for (let i = 0; i < n; ++i) {
        this.in[0][i] = inLeft[begin + i];
        this.in[1][i] = inRight[begin + i];
      }
      this.calls.process(n);
      for (let i = 0; i < n; ++i) {
        outLeft[begin + i] = this.out[0][i];
        outRight[begin + i] = this.out[1][i];
      }
    }
  }

  /** How far in the past a channel reads now, in s. @param {number} channel 0 or 1 */
  readDelay(channel) {
    return this.calls.read_delay(channel);
  }

  /** The gate's gain, linear. */
  gateGain() {
    return this.calls.gate_gain();
  }

  /** What the ducker takes from the wet signal, in dB. */
  duckGainDb() {
    return this.calls.duck_gain_db();
  }
}
