// What can be played through the effect without a file: three loops, made at a context's rate. Each
// leaves pauses in which echoes are heard.

/** @typedef {{name: string, title: string, make: (rate: number) => Promise<AudioBuffer>}} Loop */

/** @param {number} note MIDI number */
const hertz = (note) => 440 * 2 ** ((note - 69) / 12);

/** The same noise every time. @param {number} length */
function noise(length) {
  const samples = new Float32Array(length);
  let state = 1;
  for (let i = 0; i < length; ++i) {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    samples[i] = state / 2 ** 31 - 1;
  }
  return samples;
}

/**
 * Karplus and Strong's string: noise in a loop that averages neighbours.
 * @param {Float32Array} into @param {number} rate @param {number} start s @param {number} note
 * @param {number} level
 */
function pluck(into, rate, start, note, level) {
  const period = rate / hertz(note);
  const string = noise(Math.round(period));
  const begin = Math.round(start * rate);
  let last = 0;
  for (let i = 0; begin + i < into.length; ++i) {
    const at = i % string.length;
    const now = string[at];
    string[at] = 0.4985 * (now + last);
    last = now;
    into[begin + i] += level * now;
  }
}

/** @param {number} rate @param {number} seconds @param {(context: OfflineAudioContext) => void} build */
function render(rate, seconds, build) {
  const context = new OfflineAudioContext(2, Math.round(rate * seconds), rate);
  build(context);
  return context.startRendering();
}

/** @param {BaseAudioContext} context @param {Float32Array<ArrayBuffer>} samples */
function playing(context, samples) {
  const buffer = context.createBuffer(1, samples.length, context.sampleRate);
  buffer.copyToChannel(samples, 0);
  return new AudioBufferSourceNode(context, { buffer });
}

/**
 * A gain that jumps to a level at each time and falls away from it.
 * @param {BaseAudioContext} context @param {number[]} times s @param {number} level
 * @param {number} decay s, to a 1/e
 */
function strokes(context, times, level, decay) {
  const gain = new GainNode(context, { gain: 0 });
  for (const time of times) {
    gain.gain.setValueAtTime(level, time);
    gain.gain.setTargetAtTime(0, time + 0.002, decay);
  }
  return gain;
}

/** @param {number} rate */
const chord = (rate) =>
  render(rate, 4, (context) => {
    const merger = new ChannelMergerNode(context, { numberOfInputs: 2 });
    const sides = [0, 1].map(() => new Float32Array(context.length));
    // Two strummed chords; low strings stand left, high ones right.
    for (const [start, notes] of /** @type {[number, number[]][]} */ ([
      [0.02, [45, 52, 57, 60, 64, 71]],
      [1.5, [41, 48, 57, 60, 64, 67]],
    ]))
      notes.forEach((note, i) => {
        const right = 0.25 + 0.1 * i;
        pluck(sides[0], rate, start + 0.035 * i, note, 0.22 * (1 - right));
        pluck(sides[1], rate, start + 0.035 * i, note, 0.22 * right);
      });
    sides.forEach((samples, side) => {
      // Damped towards the end, so that the loop closes without a click.
      const damp = new GainNode(context);
      damp.gain.setTargetAtTime(0, 3.2, 0.12);
      const source = playing(context, samples);
      source.connect(damp).connect(merger, 0, side);
      source.start();
    });
    merger.connect(context.destination);
  });

/** @param {number} rate */
const drums = (rate) =>
  render(rate, 4, (context) => {
    const step = 0.125; // s; sixteenths at 120 beats per minute
    const kicks = [0, 6, 8, 16, 19, 24].map((n) => n * step);
    const snares = [4, 12, 20, 28, 31].map((n) => n * step);
    const hats = Array.from({ length: 14 }, (_, n) => (2 * n + 2) * step);

    const drum = new OscillatorNode(context, { frequency: 50 });
    for (const time of kicks) {
      drum.frequency.setValueAtTime(170, time);
      drum.frequency.setTargetAtTime(48, time, 0.03);
    }
    drum.connect(strokes(context, kicks, 0.7, 0.1)).connect(context.destination);
    drum.start();

    const hiss = playing(context, noise(context.length));
    const body = new BiquadFilterNode(context, { type: 'bandpass', frequency: 1800, Q: 0.6 });
    hiss.connect(body);
    body.connect(strokes(context, snares, 0.55, 0.06)).connect(context.destination);
    const air = new BiquadFilterNode(context, { type: 'highpass', frequency: 7500 });
    const side = new StereoPannerNode(context, { pan: 0.3 });
    hiss.connect(air);
    air
      .connect(strokes(context, hats, 0.16, 0.018))
      .connect(side)
      .connect(context.destination);
    hiss.start();
  });

/** @param {number} rate */
const voice = (rate) =>
  render(rate, 5, (context) => {
    const sung = /** @type {[number, number, number[]][]} */ ([
      // start, note, formants in Hz
      [0.05, 57, [730, 1090, 2440]], // ah
      [0.7, 60, [570, 840, 2410]], // oh
      [1.35, 64, [270, 2290, 3010]], // ee
      [2.3, 62, [730, 1090, 2440]],
    ]);
    const throat = new OscillatorNode(context, { type: 'sawtooth' });
    const vibrato = new OscillatorNode(context, { frequency: 5.4 });
    const depth = new GainNode(context, { gain: 22 });
    vibrato.connect(depth).connect(throat.detune);
    const breath = new GainNode(context, { gain: 0 });
    const formants = [0, 1, 2].map((i) => {
      const formant = new BiquadFilterNode(context, { type: 'bandpass', Q: 7 + 3 * i });
      const level = new GainNode(context, { gain: [1.6, 1.0, 0.5][i] });
      throat.connect(formant).connect(level).connect(breath);
      return formant;
    });
    for (const [start, note, frequencies] of sung) {
      throat.frequency.setTargetAtTime(hertz(note), start, start < 0.1 ? 0.001 : 0.03);
      formants.forEach((formant, i) =>
        formant.frequency.setTargetAtTime(frequencies[i], start, 0.04),
      );
      breath.gain.setTargetAtTime(0.32, start, 0.04);
      breath.gain.setTargetAtTime(0, start + 0.5, 0.07);
    }
    breath.connect(context.destination);
    throat.start();
    vibrato.start();
  });

/** @type {Loop[]} */
export const loops = [
  { name: 'chord', title: 'Plucked chords', make: chord },
  { name: 'drums', title: 'Drum pattern', make: drums },
  { name: 'voice', title: 'Voice-like tone', make: voice },
];
