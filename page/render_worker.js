// Renders a whole sound away from the page.
//
//   in:  Job
//   out: {progress: 0 to 1}, then {wav: Blob, seconds, cut} or {fault: text}
import { Effect } from './effect.js';
import { wavHeader } from './wav.js';

/**
 * @typedef {object} Job
 * @property {WebAssembly.Module} module
 * @property {number} rate Hz
 * @property {number[][]} values of all attributes
 * @property {number[][] | null} quietValues the same without noise, where there is noise, which never
 *   ends: an instance with these decides when the tail is over
 * @property {number} hold s of silence that end the tail
 * @property {number[]} [seed]
 * @property {Float32Array<ArrayBuffer>[]} channels left, right
 */

const blockFrames = 1024;
const longestTail = 60; // s
const silence = 1e-4; // -80 dBFS

/** @param {Float32Array} samples */
const isSilent = (samples) => samples.every((x) => Math.abs(x) < silence);

/** @param {Job} job */
function render({ module, rate, values, quietValues, hold, seed, channels: [left, right] }) {
  /** @param {number[][]} v */
  const make = (v) => {
    const effect = new Effect(module, rate);
    effect.startWith(v);
    if (seed) effect.seed(seed[0], seed[1]);
    return effect;
  };
  const effect = make(values);
  const quiet = quietValues && make(quietValues);
  const inputs = [new Float32Array(blockFrames), new Float32Array(blockFrames)];
  const outputs = [new Float32Array(blockFrames), new Float32Array(blockFrames)];
  const quietOutputs = [new Float32Array(blockFrames), new Float32Array(blockFrames)];
  /** @type {Blob[]} */
  const parts = [];
  /** @type {Float32Array<ArrayBuffer>[]} */
  let blocks = [];
  let frames = 0;
  let silentFrames = 0;
  let lastProgress = 0; // ms
  const end = left.length + longestTail * rate;
  while (frames < end && (frames < left.length || silentFrames < hold * rate)) {
    const n = Math.min(blockFrames, frames < left.length ? left.length - frames : end - frames);
    [left, right].forEach((channel, c) => {
      inputs[c].fill(0);
      inputs[c].set(channel.subarray(frames, frames + n));
    });
    /** @param {Float32Array[]} of */
    const cut = (of) => of.map((channel) => channel.subarray(0, n));
    const [l, r] = cut(outputs);
    const [inLeft, inRight] = cut(inputs);
    effect.process(inLeft, inRight, l, r);
    const [keyLeft, keyRight] = quiet ? cut(quietOutputs) : [l, r];
    quiet?.process(inLeft, inRight, keyLeft, keyRight);
    silentFrames = isSilent(keyLeft) && isSilent(keyRight) ? silentFrames + n : 0;
    const interleaved = new Float32Array(2 * n);
    for (let i = 0; i < n; ++i) {
      interleaved[2 * i] = l[i];
      interleaved[2 * i + 1] = r[i];
    }
    blocks.push(interleaved);
    frames += n;
    // A blob may be kept on disk, arrays would not.
    if (blocks.length === 1000) parts.push(new Blob(blocks.splice(0)));
    if (performance.now() - lastProgress > 50) {
      lastProgress = performance.now();
      postMessage({ progress: Math.min(frames / left.length, 1) });
    }
  }
  const wav = new Blob([wavHeader(frames, rate, 2), ...parts, ...blocks], { type: 'audio/wav' });
  postMessage({ wav, seconds: frames / rate, cut: silentFrames < hold * rate });
}

onmessage = ({ data }) => {
  try {
    render(data);
  } catch (failure) {
    postMessage({ fault: String(failure) });
  }
};
