// Reads levels and state while something plays, and draws them.
import { DelayDisplay, EnvelopeDisplay, SpectrumDisplay } from './displays.js';
import { byId } from './elements.js';
import { History } from './history.js';
import { decibels, Levels } from './levels.js';
import { Meter } from './meter.js';

/** @typedef {import('./player.js').Player} Player */
/** @typedef {import('./transport.js').Transport} Transport */

/** Draws while something plays, at the screen's pace or four times a second. @param {Transport} transport */
export function animate(transport) {
  const calm = matchMedia('(prefers-reduced-motion: reduce)');
  const calmPace = 0.25; // s
  const history = new History();
  const meters = {
    input: new Meter(byId('input-meter'), 'Input'),
    output: new Meter(byId('output-meter'), 'Output'),
  };
  const envelope = new EnvelopeDisplay(byId('envelope'), history);
  const delayTime = new DelayDisplay(byId('delay-time'), history);
  /** @type {{input: Levels, output: Levels, spectrum: SpectrumDisplay} | null} */
  let readers = null;
  let last = 0; // s, of the context
  let lastText = 0;

  const draw = () => {
    requestAnimationFrame(draw);
    const { player } = transport;
    if (!player || !transport.playing) return;
    readers ??= {
      input: new Levels(player.inputTaps),
      output: new Levels(player.outputTaps),
      spectrum: new SpectrumDisplay(byId('spectrum'), player.spectrumTap),
    };
    const now = player.context.currentTime;
    if (now - last < (calm.matches ? calmPace : 0.001)) return;
    player.ask();
    const input = readers.input.read(now);
    const output = readers.output.read(now);
    meters.input.show(input, now, now - last);
    meters.output.show(output, now, now - last);
    const delays = player.state?.readDelay ?? [0, 0];
    history.add(now, [...input, ...output].map(decibels), delays);
    envelope.draw(now);
    delayTime.draw(now);
    readers.spectrum.draw();
    if (now - lastText > 0.1) {
      showTexts(player);
      lastText = now;
    }
    last = now;
  };
  /** @param {Player} player */
  const showTexts = ({ state }) => {
    if (!state) return;
    const ms = state.readDelay.map((s) => (s * 1000).toFixed(s < 0.1 ? 1 : 0));
    byId('delay-text').textContent = `left ${ms[0]} ms, right ${ms[1]} ms`;
    const gains = [];
    if (state.gateGain < 1) gains.push(`gate ${Math.round(100 * state.gateGain)} % open`);
    if (state.duckGainDb < -0.05) gains.push(`ducked by ${(-state.duckGainDb).toFixed(1)} dB`);
    byId('gains').textContent = gains.join(', ');
  };
  draw();
  envelope.draw(0);
  delayTime.draw(0);
}
