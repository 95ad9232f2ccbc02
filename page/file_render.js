// Renders a sound with the present settings in a worker, with progress and cancel.

/** @typedef {import('./settings.js').Settings} Settings */

/**
 * How long the output is silent before the tail is over, in s: a second, or the longest delay, twice
 * that when it is modulated.
 * @param {Settings} settings
 */
function holdTime(settings) {
  /** @param {string} name */
  const values = (name) => settings.values[settings.attributes.findIndex((a) => a.name === name)];
  const modulated = values('mod_delay')[0] > 0 || values('wobble')[0] > 0;
  return Math.max(1, Math.max(...values('delay')) * (modulated ? 2 : 1));
}

/** @param {Settings} settings */
function quietValues(settings) {
  const noise = settings.attributes.findIndex((a) => a.name === 'noise');
  if (settings.values[noise][0] === 0) return null;
  return settings.values.map((v, i) => (i === noise ? [0] : v));
}

/**
 * @typedef {{wav: Blob, seconds: number, cut: boolean}} Rendered  cut: it was not silent at the end
 */

/**
 * The sound is copied. Rejects with what went wrong, or with AbortError.
 * @param {WebAssembly.Module} module @param {Settings} settings @param {AudioBuffer} sound
 * @param {(share: number) => void} onProgress @param {AbortSignal} signal @param {number[]} [seed]
 * @returns {Promise<Rendered>}
 */
export function renderToFile(module, settings, sound, onProgress, signal, seed) {
  const worker = new Worker('render_worker.js', { type: 'module' });
  const right = Math.min(1, sound.numberOfChannels - 1);
  const channels = [sound.getChannelData(0), sound.getChannelData(right)].map((c) => c.slice());
  const finished = new Promise((resolve, reject) => {
    signal.addEventListener('abort', () => reject(new DOMException('cancelled', 'AbortError')));
    worker.onerror = (event) => reject(new Error(event.message || 'the worker was not loaded'));
    worker.onmessage = ({ data }) => {
      if (data.fault !== undefined) reject(new Error(data.fault));
      else if (data.wav) resolve(data);
      else onProgress(data.progress);
    };
    worker.postMessage(
      {
        module,
        rate: sound.sampleRate,
        values: settings.values,
        quietValues: quietValues(settings),
        hold: holdTime(settings),
        seed,
        channels,
      },
      channels.map((c) => c.buffer),
    );
  });
  return finished.finally(() => worker.terminate());
}
