// SPDX-License-Identifier: MIT
#include "tools/eval/report/style.h"

namespace eval {

const char* const kStyle = R"(
:root {
  color-scheme: light dark;
  --page: #f6f7f8; --surface: #ffffff; --ink: #16202a; --muted: #56626e; --hair: #dfe3e7;
  --grid: #e9ecef; --accent: #075e9c; --on-accent: #ffffff; --right: 7, 94, 156;
  --wrong: 196, 78, 0; --on-strong: #ffffff; --region: 0.17; --bar: 0.38;
  --c0: #0068a8; --c1: #c44e00; --c2: #00805c; --c3: #b0508c;
  --c4: #9a6a00; --c5: #2a8fc4; --c6: #6b5bb5; --c7: #5c6670;
  --k0: #075e9c; --k1: #c44e00; --k2: #5c6670;
  --chosen: var(--accent); --on-chosen: var(--on-accent);
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #101418; --surface: #181d23; --ink: #e6ebf0; --muted: #9daab6; --hair: #2d353d;
    --grid: #262d34; --accent: #68b5f0; --on-accent: #0c1420; --right: 74, 158, 222;
    --wrong: 240, 132, 56; --on-strong: #0c1016; --region: 0.24; --bar: 0.46;
    --c0: #58aeea; --c1: #f08b4a; --c2: #3dbd94; --c3: #e08fc0;
    --c4: #e0b040; --c5: #8fd0f5; --c6: #a79af0; --c7: #a3aeb8;
    --k0: #68b5f0; --k1: #f08b4a; --k2: #a3aeb8;
  }
}
* { box-sizing: border-box }
html { scroll-behavior: smooth; scroll-padding-top: 3.5rem }
body {
  margin: 0; background: var(--page); color: var(--ink);
  font: 16px/1.55 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", "Liberation Sans", sans-serif;
  font-variant-numeric: tabular-nums;
}
header, main, footer { max-width: 76rem; margin: 0 auto; padding: 0 1.25rem }
header { padding-top: 2.5rem }
h1 { font-size: 2rem; line-height: 1.2; margin: 0 0 .3rem; letter-spacing: -.015em; overflow-wrap: anywhere }
h2 { font-size: 1.3rem; margin: 0 0 .25rem; letter-spacing: -.01em }
h3 { font-size: .95rem; margin: 0 0 .25rem }
h3.list { margin-top: 1.5rem }
p { margin: 0 0 .75rem }
a { color: var(--accent) }
small { font-size: .75rem }
.kicker { color: var(--accent); font-weight: 600; font-size: .85rem; margin: 0 0 .35rem }
.facts, .lead, .note, .muted { color: var(--muted) }
.facts { overflow-wrap: anywhere }
.lead { max-width: 52rem; margin-bottom: 1.25rem }
.note { font-size: .85rem; margin: .4rem 0 0; max-width: 46rem }
nav {
  position: sticky; top: 0; z-index: 1; background: var(--page); border-bottom: 1px solid var(--hair);
  margin-top: 1rem;
}
nav div { max-width: 76rem; margin: 0 auto; padding: .6rem 1.25rem; display: flex; flex-wrap: wrap; gap: .25rem 1.25rem; font-size: .9rem }
nav a { text-decoration: none; color: var(--muted) }
nav a:hover { color: var(--accent) }
section {
  background: var(--surface); border: 1px solid var(--hair); border-radius: 10px;
  padding: 1.5rem; margin: 1.25rem 0; position: relative;
}
footer { color: var(--muted); font-size: .85rem; padding-bottom: 3rem }
.wide { overflow-x: auto }
table { border-collapse: collapse; font-size: .92rem }
th { font-weight: 600; text-align: left }
.number { text-align: right }
table.figures { width: 100% }
table.figures th, table.figures td { padding: .35rem .75rem; border-bottom: 1px solid var(--hair) }
table.figures thead th { color: var(--muted); font-size: .8rem; white-space: nowrap }
table.figures tbody th { font-weight: 400 }
td.bar { position: relative; min-width: 8rem; z-index: 0 }
td.bar .fill {
  position: absolute; left: 0; top: 20%; bottom: 20%; background: var(--c); opacity: .25;
  border-radius: 3px; z-index: -1;
}
.tiles { display: grid; grid-template-columns: repeat(auto-fit, minmax(11rem, 1fr)); gap: 1rem 1.75rem; margin-bottom: 1.5rem }
.tile h3 { color: var(--muted); font-weight: 500; font-size: .85rem; margin: 0 }
.tile .big { font-size: 1.9rem; line-height: 1.25; font-weight: 600; letter-spacing: -.02em; margin: 0 }
.tile .note { margin: 0 }
.tag { white-space: nowrap }
.mark { vertical-align: -.1em }
.mark path:not(.line) { fill: var(--c) }
.legend { display: flex; flex-wrap: wrap; gap: .2rem 1.25rem; font-size: .88rem; margin: .5rem 0 0 }
.c0 { --c: var(--c0) } .c1 { --c: var(--c1) } .c2 { --c: var(--c2) } .c3 { --c: var(--c3) }
.c4 { --c: var(--c4) } .c5 { --c: var(--c5) } .c6 { --c: var(--c6) } .c7 { --c: var(--c7) }
.k0 { --c: var(--k0) } .k1 { --c: var(--k1) } .k2 { --c: var(--k2) }
table.heat { border-spacing: 3px; border-collapse: separate }
table.heat th { padding: .3rem .7rem; font-weight: 500 }
table.heat thead th { text-align: center }
table.heat .side { color: var(--muted); font-size: .8rem; font-weight: 400 }
table.heat thead th.number, table.heat td.number { color: var(--muted); text-align: right; padding: .3rem .7rem }
table.heat td:not(.number) { text-align: center; min-width: 5.5rem; height: 3.9rem; border-radius: 6px; font-size: 1.15rem }
table.heat td.right { background: rgba(var(--right), calc(.12 + .88 * var(--s))) }
table.heat td.wrong { background: rgba(var(--wrong), calc(.18 + .82 * var(--s))) }
table.heat td.none { background: var(--grid); color: var(--muted) }
table.heat thead td { height: auto !important }
table.heat td a { display: flex; flex-direction: column; justify-content: center; height: 100%; color: inherit; text-decoration: none; line-height: 1.2; border-radius: 6px }
table.heat td a:hover, table.heat td a:focus-visible { outline: 2px solid var(--ink) }
table.heat td.strong { color: var(--on-strong); font-weight: 600 }
table.heat small { font-weight: 400 }
table.heat.compact td:not(.number) { min-width: 2.6rem; height: 2.2rem; font-size: .9rem }
table.heat.compact thead tr:last-child th:not(.side) { writing-mode: vertical-rl; transform: rotate(180deg); text-align: left; padding: .5rem .1rem }
table.heat.compact thead .mark { transform: rotate(180deg) }
table.heat.compact tbody th { padding: 0 .5rem; white-space: nowrap }
table.heat.compact small { display: none }
.cells { display: grid; grid-template-columns: repeat(auto-fill, minmax(19rem, 1fr)); gap: .75rem }
.cell { border: 1px solid var(--hair); border-radius: 8px; padding: .6rem .8rem }
.cell:target, .mistake:target { border-color: var(--accent); box-shadow: 0 0 0 1px var(--accent) }
.cell h3 { font-weight: 500 }
.rows { margin: 0; font-size: .9rem; overflow-wrap: anywhere; max-height: 12rem; overflow-y: auto }
figure { margin: 0 }
svg.chart { display: block; width: 100%; height: auto; max-width: 46rem; overflow: hidden }
svg text { font-size: 12px; fill: var(--muted) }
svg text.axis { fill: var(--ink) }
.middle { text-anchor: middle } .end { text-anchor: end }
.grid { stroke: var(--grid); fill: none }
.base { stroke: var(--muted); fill: none }
.line { fill: none; stroke: var(--c); stroke-width: 2; stroke-linejoin: round }
.k1.line { stroke-dasharray: 7 4 } .k2.line { stroke-dasharray: 2 3 }
.ideal { stroke: var(--muted); stroke-width: 1; stroke-dasharray: 3 4 }
.now { stroke: var(--muted); stroke-dasharray: 2 3 }
.whisker { stroke: var(--k0); stroke-width: 1.5; opacity: .55; fill: none }
.bead { fill: var(--k0); stroke: var(--surface); stroke-width: 1.5 }
.bar { fill: var(--c); fill-opacity: var(--bar) }
.solid { fill-opacity: .85 }
.region { fill: var(--c); fill-opacity: var(--region); shape-rendering: crispEdges }
.point { fill: var(--c); stroke: var(--surface); stroke-width: .6 }
.ring { fill: none; stroke: var(--c, var(--ink)); stroke-width: 2; pointer-events: all }
.dot { stroke: var(--c); stroke-width: 4; stroke-linecap: round; fill: none; opacity: .8 }
.panels { display: grid; grid-template-columns: repeat(auto-fill, minmax(20rem, 1fr)); gap: 1.5rem 2rem }
.panels.two { grid-template-columns: repeat(auto-fit, minmax(min(26rem, 100%), 1fr)) }
.pairs { display: grid; grid-template-columns: minmax(0, 1fr) minmax(0, 1.05fr); gap: 2rem; align-items: start }
@media (max-width: 60rem) { .pairs { grid-template-columns: minmax(0, 1fr) } }
.matrix { display: grid; gap: 5px }
.matrix .name { display: flex; align-items: center; justify-content: center; text-align: center; font-size: .8rem; line-height: 1.2; aspect-ratio: 1; overflow-wrap: anywhere; background: var(--page); border-radius: 6px; padding: .2rem }
.thumb { --chosen: var(--surface); --on-chosen: inherit; border: 2px solid var(--hair); border-radius: 6px; cursor: pointer; aspect-ratio: 1; display: block; overflow: hidden }
.thumb:hover { border-color: var(--muted) }
.thumb svg { display: block; width: 100%; height: 100% }
.choice { position: absolute; opacity: 0; pointer-events: none }
.choices { display: flex; flex-wrap: wrap; gap: .4rem; margin-bottom: .9rem }
.choices label { border: 1px solid var(--hair); border-radius: 99px; padding: .15rem .8rem; font-size: .85rem; cursor: pointer }
.choices label:hover { border-color: var(--accent) }
details { margin-top: .75rem }
summary { cursor: pointer }
.mistake { border: 1px solid var(--hair); border-radius: 8px; padding: .6rem .9rem }
.mistake[open] summary { margin-bottom: .75rem }
.mistake summary b { margin-right: .5rem }
.mistake svg.chart { max-width: 40rem }
@media print { nav { display: none } section { break-inside: avoid-page } body { background: none } }
@media (prefers-reduced-motion: reduce) { html { scroll-behavior: auto } }
)";

}  // namespace eval
