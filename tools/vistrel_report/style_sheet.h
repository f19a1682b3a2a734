// The page's style. The hash in the page's policy allows only this style sheet; a test computes it again.
#pragma once

/// The text between <style> and </style>.
#define VISTREL_REPORT_STYLE                                                                                 \
    ":root{color-scheme:light dark;--page:#f4f5f7;--card:#fff;--ink:#1c2330;--soft:#5b6575;--edge:#d8dde5;"  \
    "--warp:#2f6fb3;--model:#d98324;--first:#5b7f9f;--second:#2f9a7a;--marked:#c23b3b;--mark:#a3abb8;"       \
    "--bad:#b3261e;--cause:#a85b00;--part:#7a6a00;--know:#3c5f8a;--line:#fff3c4}"                            \
    "@media(prefers-color-scheme:dark){:root{--page:#14171c;--card:#1d2229;--ink:#e6e9ee;--soft:#a0a9b8;"    \
    "--edge:#343c48;--warp:#6ea8e6;--model:#f0a755;--first:#8fb0cc;--second:#5cc7a5;--marked:#ef7b74;"       \
    "--mark:#667080;--bad:#ff8a80;--cause:#ffb867;--part:#e2cf5a;--know:#92b8e6;--line:#453b12}}"            \
    "*{box-sizing:border-box}"                                                                               \
    "body{margin:0;background:var(--page);color:var(--ink);font:16px/1.5 system-ui,sans-serif}"              \
    "main{max-width:70rem;margin:0 auto;padding:1rem}"                                                       \
    "h1{font-size:1.5rem;margin:.5rem 0}h2{font-size:1.25rem;margin:2rem 0 .5rem;overflow-wrap:anywhere}"    \
    "h3{font-size:1.05rem;margin:1.5rem 0 .5rem}h4{font-size:1rem;margin:0}"                                 \
    "p{margin:.35rem 0}a{color:var(--know)}"                                                                 \
    ".sentence{font-size:1.15rem;font-weight:600;border-left:.3rem solid var(--know);padding:.4rem .8rem;"   \
    "background:var(--card);margin:.8rem 0}"                                                                 \
    ".sentence.untrusted{border-color:var(--bad)}.sentence.explains{border-color:var(--cause)}"              \
    ".sentence.contributes{border-color:var(--part)}"                                                        \
    ".soft,.facts dt,.ids{color:var(--soft);font-size:.9rem}"                                                \
    ".facts{display:grid;grid-template-columns:max-content 1fr;gap:.15rem 1rem;margin:.8rem 0}"              \
    ".facts dd{margin:0;overflow-wrap:anywhere}"                                                             \
    ".finding{background:var(--card);border:1px solid var(--edge);border-left:.3rem solid var(--know);"      \
    "border-radius:.3rem;padding:.6rem .9rem;margin:.5rem 0}"                                                \
    ".finding.untrusted{border-left-color:var(--bad)}.finding.explains{border-left-color:var(--cause)}"      \
    ".finding.contributes{border-left-color:var(--part)}"                                                    \
    ".doubt{color:var(--soft);font-style:italic}"                                                            \
    ".charts{display:grid;grid-template-columns:repeat(auto-fit,minmax(min(100%,26rem),1fr));gap:1rem;"      \
    "align-items:start}"                                                                                     \
    "figure{margin:0;background:var(--card);border:1px solid var(--edge);border-radius:.3rem;padding:.9rem;" \
    "min-width:0;break-inside:avoid}"                                                                        \
    "figcaption{font-weight:600;margin-bottom:.4rem}figure svg{display:block;width:100%;height:auto}"        \
    ".legend{font-size:.9rem}.legend svg{display:inline-block;width:12px;height:12px}"                       \
    ".legend span{margin-right:.8rem}"                                                                       \
    "text{font-size:12.5px;fill:var(--ink);paint-order:stroke;stroke:var(--card);stroke-width:3px;"          \
    "stroke-linejoin:round}text.label.marked{font-weight:700}text.mark-label{fill:var(--soft);"              \
    "font-size:11.5px}"                                                                                      \
    ".bar.warp{fill:var(--warp)}.bar.model{fill:var(--model)}.bar.first{fill:var(--first)}"                  \
    ".bar.second{fill:var(--second)}.bar.marked{fill:var(--marked)}.bar.track{fill:var(--edge)}"             \
    ".mark{stroke:var(--mark);stroke-width:1;stroke-dasharray:3 3}.cut rect{fill:var(--card)}"               \
    ".limit{fill:none;stroke:var(--mark);stroke-width:1}"                                                    \
    "details{margin-top:.5rem}summary{cursor:pointer;color:var(--know)}"                                     \
    ".scroll{overflow-x:auto}table{border-collapse:collapse;font-size:.9rem;margin:.4rem 0}"                 \
    "th,td{border-bottom:1px solid var(--edge);padding:.2rem .7rem .2rem 0;text-align:left;"                 \
    "vertical-align:top}"                                                                                    \
    ".lines{font:13px/1.45 ui-monospace,monospace;background:var(--card);border:1px solid var(--edge);"      \
    "border-radius:.3rem;padding:.5rem 0;margin:.3rem 0}"                                                    \
    ".line{display:flex;padding:0 .6rem}.line .number{flex:none;width:3.2em;color:var(--soft);"              \
    "text-align:right;padding-right:.9em}"                                                                   \
    ".line .text{white-space:pre-wrap;overflow-wrap:anywhere;unicode-bidi:isolate;flex:1;min-width:0}"       \
    ".line.found{background:var(--line)}.line .why{flex:none;padding-left:.6em;"                             \
    "font:600 12px/1.6 system-ui,sans-serif}"                                                                \
    "@media(max-width:40rem){.line{flex-wrap:wrap}.line .text{flex-basis:70%}.line .why{width:100%;"         \
    "padding-left:3.9em}.facts{grid-template-columns:1fr}.facts dd{margin-bottom:.3rem}}"                    \
    "@media print{body{background:#fff;font-size:11pt}main{max-width:none;padding:0}"                        \
    ".finding,tr,.line{break-inside:avoid}h2,h3,h4,summary{break-after:avoid}"                               \
    ".charts{grid-template-columns:1fr 1fr}.lines{font-size:8.5pt;border:0}"                                 \
    ".line.found{outline:1px solid #888}a{color:inherit}}"

/// SHA-256 of the above in base64, as used in the page's policy.
#define VISTREL_REPORT_STYLE_HASH "M+eFWQDVLLzURI0W4rcpumAwy37tT0rAU0+HLCESHs8="
