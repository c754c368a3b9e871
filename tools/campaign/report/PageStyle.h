#pragma once

namespace report {

/**
 * How the page looks: light and dark, on a narrow screen and on paper. Colours only repeat what
 * words say. In a narrow window a row of a table becomes a block, each cell with its heading.
 */
inline constexpr char kPageStyle[] = R"(
:root { color-scheme: light dark; --text: #1c1f23; --muted: #555c66; --page: #ffffff;
  --panel: #f4f5f7; --line: #d4d8de; --good: #1a7f37; --bad: #b91c2c; --other: #56617a;
  --warn: #9a5b00; --label: #ffffff; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e6e8eb; --muted: #a3abb6; --page: #14171a; --panel: #1e2328; --line: #39414a;
    --good: #56c271; --bad: #ff7b85; --other: #9db0d3; --warn: #e8a94c; --label: #101214; }
  img { filter: brightness(0.88); border-radius: 0.3rem; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1.5rem; max-width: 72rem; background: var(--page);
  color: var(--text); font: 1rem/1.5 system-ui, "DejaVu Sans", sans-serif; }
h1 { margin: 0 0 0.5rem; padding: 0.75rem 1rem; border-left: 0.6rem solid; background: var(--panel);
  font-size: 1.5rem; line-height: 1.25; }
h2 { margin: 2.25rem 0 0.75rem; font-size: 1.25rem; }
h3 { margin: 1.5rem 0 0.25rem; font-size: 1.05rem; }
p, ul, dl { margin: 0.5rem 0; }
a { color: inherit; }
.muted, small { color: var(--muted); }
small { display: block; font-weight: normal; }
.passed { color: var(--good); } .failed { color: var(--bad); }
.not-observed, .not-played { color: var(--other); } .not-finished { color: var(--warn); }
.mark { padding: 0.1rem 0.5rem; border-radius: 0.3rem; background: currentColor;
  font-size: 0.85rem; white-space: nowrap; }
.mark span { color: var(--label); }
.numbers { display: grid; grid-template-columns: repeat(auto-fill, minmax(11rem, 1fr)); gap: 0.75rem; }
.numbers div { padding: 0.6rem 0.9rem; background: var(--panel); border-radius: 0.3rem; }
.numbers dt { color: var(--muted); font-size: 0.85rem; }
.numbers dd { margin: 0; font-size: 1.15rem; font-variant-numeric: tabular-nums; }
.numbers dd small { font-size: 0.8rem; }
.bar { display: block; width: 100%; height: 3rem; background: var(--panel); }
.bar rect { fill: currentColor; }
.ticks { position: relative; height: 1.6rem; font-size: 0.8rem; color: var(--muted); }
.ticks span { position: absolute; padding-left: 0.25rem; border-left: 1px solid var(--muted); }
.legend { display: flex; flex-wrap: wrap; gap: 0.4rem 1.2rem; margin: 0.25rem 0; padding: 0;
  list-style: none; font-size: 0.9rem; }
.legend b { display: inline-block; width: 0.8rem; height: 0.8rem; margin-right: 0.4rem;
  background: currentColor; }
.legend span { color: var(--text); }
table { width: 100%; border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: 0.4rem 0.6rem; border-top: 1px solid var(--line); text-align: left;
  vertical-align: top; overflow-wrap: anywhere; }
thead th { border-top: 0; color: var(--muted); font-size: 0.85rem; font-weight: normal; }
.number { text-align: right; }
.more > td { padding-top: 0; border-top: 0; }
.plays { font-size: 0.85rem; }
.plays td > span[class] { white-space: nowrap; }
summary { cursor: pointer; color: var(--muted); font-size: 0.9rem; }
figure { margin: 0.75rem 0; overflow-x: auto; }
img { display: block; width: 100%; min-width: 42rem; max-width: 70rem; height: auto; }
figcaption { color: var(--muted); font-size: 0.85rem; }
.facts { display: grid; grid-template-columns: minmax(8rem, max-content) 1fr; gap: 0.25rem 1rem; }
.facts dt { color: var(--muted); }
.facts dd { margin: 0; overflow-wrap: anywhere; }
code { overflow-wrap: anywhere; }
.option { white-space: nowrap; }
@media screen and (max-width: 44rem) {
  body { padding: 0.75rem; }
  h1 { font-size: 1.25rem; }
  .facts { grid-template-columns: 1fr; gap: 0; }
  .facts dd { margin-bottom: 0.5rem; }
  table, tbody, tr, td, th { display: block; border: 0; }
  thead { position: absolute; left: -999rem; }
  tr { padding: 0.5rem 0; border-top: 1px solid var(--line); }
  tr.more { padding-top: 0; border-top: 0; }
  td, th, .number { padding: 0.1rem 0; text-align: left; }
  .mark { justify-self: start; }
  td[data-label] { display: grid; grid-template-columns: 8rem 1fr; }
  td[data-label]::before { content: attr(data-label); color: var(--muted); } }
@media print {
  :root { --text: #000; --muted: #444; --page: #fff; --panel: #fff; --line: #999; --good: #14632b;
    --bad: #a01525; --other: #444e66; --warn: #7a4800; --label: #fff; }
  body { padding: 0; max-width: none; font-size: 9.5pt; }
  h2, h3 { break-after: avoid; }
  figure, .numbers div, tr { break-inside: avoid; }
  figure { overflow: visible; }
  img { min-width: 0; filter: none; }
  .bar { border: 1px solid #999; }
  .bar, .mark, .legend b { print-color-adjust: exact; -webkit-print-color-adjust: exact; } }
)";

} // namespace report
