// The way of the sound: source -> effect -> volume -> loudspeaker, with taps for the meters and
// displays before and after the effect.
//
//   source -+-> input taps
//           +-> effect -> wet -+-> output taps
//           +-> dry -----------+-> volume -> destination

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {import('./worklet.js').State} State */

const fadeTime = 0.01; // s, of bypass and volume

/** What a browser needs for the effect; empty when it has it all. */
export function missingFeature() {
  // (module (func (result v128) i32.const 0 i8x16.splat i8x16.popcnt))
  const simd = [
    0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0, 253,
    15, 253, 98, 11,
  ];
  if (typeof WebAssembly !== 'object' || !WebAssembly.validate(new Uint8Array(simd)))
    return 'WebAssembly with SIMD';
  if (typeof AudioWorkletNode !== 'function')
    return window.isSecureContext ? 'AudioWorklet' : 'AudioWorklet, which needs https or localhost';
  return '';
}

/** @returns {Promise<WebAssembly.Module>} */
export async function loadModule() {
  const response = await fetch('vesk.wasm');
  if (!response.ok) throw new Error(`vesk.wasm was not loaded: status ${response.status}`);
  // Not compileStreaming: a plain server may not know the type of the file.
  return WebAssembly.compile(await response.arrayBuffer());
}

/**
 * @param {BaseAudioContext} context @param {WebAssembly.Module} module @param {number[][]} values
 * @param {number[]} [seed]
 */
export async function makeEffectNode(context, module, values, seed) {
  await context.audioWorklet.addModule('worklet.js');
  return new AudioWorkletNode(context, 'vesk', {
    channelCount: 2,
    channelCountMode: 'explicit',
    outputChannelCount: [2],
    processorOptions: { module, values, seed },
  });
}

/** Two analysers, for left and right. @param {AudioNode} node */
function taps(node) {
  const splitter = new ChannelSplitterNode(node.context, { numberOfOutputs: 2 });
  node.connect(splitter);
  return [0, 1].map((side) => {
    const tap = new AnalyserNode(node.context, { fftSize: 8192 });
    splitter.connect(tap, side);
    return tap;
  });
}

export class Player {
  /**
   * Needs a gesture of the user before the context plays.
   * @param {WebAssembly.Module} module @param {Settings} settings
   */
  static async make(module, settings) {
    const context = new AudioContext({ latencyHint: 'interactive' });
    try {
      return new Player(context, await makeEffectNode(context, module, settings.values), settings);
    } catch (failure) {
      context.close();
      throw failure;
    }
  }

  /** @param {AudioContext} context @param {AudioWorkletNode} effect @param {Settings} settings */
  constructor(context, effect, settings) {
    this.context = context;
    this.effect = effect;
    /** @type {AudioNode | null} */
    this.source = null;
    /** @type {State | null} */
    this.state = null;
    this.entry = new GainNode(context, { channelCount: 2, channelCountMode: 'explicit' });
    this.wet = new GainNode(context);
    this.dry = new GainNode(context, { gain: 0 });
    const sum = new GainNode(context);
    this.volume = new GainNode(context);
    this.entry.connect(effect).connect(this.wet).connect(sum);
    this.entry.connect(this.dry).connect(sum);
    sum.connect(this.volume).connect(context.destination);
    this.inputTaps = taps(this.entry);
    this.outputTaps = taps(sum);
    this.spectrumTap = new AnalyserNode(context, { fftSize: 8192, smoothingTimeConstant: 0.75 });
    sum.connect(this.spectrumTap);
    settings.onChange((index) => effect.port.postMessage({ set: [index, settings.values[index]] }));
    effect.port.onmessage = ({ data }) => (this.state = data);
  }

  /** @param {'clear' | 'reset'} call */
  call(call) {
    this.effect.port.postMessage({ call });
  }

  /** The answer is the next state. */
  ask() {
    this.effect.port.postMessage({ ask: true });
  }

  /** @param {boolean} on */
  setBypass(on) {
    this.fade(this.wet, on ? 0 : 1);
    this.fade(this.dry, on ? 1 : 0);
  }

  /** @param {number} db */
  setVolume(db) {
    this.fade(this.volume, 10 ** (db / 20));
  }

  /** @private @param {GainNode} node @param {number} gain */
  fade(node, gain) {
    node.gain.setTargetAtTime(gain, this.context.currentTime, fadeTime / 3);
  }

  /** Replaces the source; null: silence, in which the effect rings on. @param {AudioNode | null} source */
  play(source) {
    if (this.source) {
      this.source.disconnect();
      if (this.source instanceof AudioBufferSourceNode) this.source.stop();
      if (this.source instanceof MediaStreamAudioSourceNode)
        for (const track of this.source.mediaStream.getTracks()) track.stop();
    }
    this.source = source;
    source?.connect(this.entry);
    if (source instanceof AudioBufferSourceNode) source.start();
  }

  /** @param {AudioBuffer} buffer */
  playLoop(buffer) {
    this.play(new AudioBufferSourceNode(this.context, { buffer, loop: true }));
  }
}
